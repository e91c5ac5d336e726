#ifndef VANTREL_TESTS_BULK_HANDLES_H
#define VANTREL_TESTS_BULK_HANDLES_H

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "bulk/attributes.h"
#include "bulk/create.h"
#include "bulk/filter.h"
#include "bulk/results.h"
#include "support/client_test.h"

namespace vantrel::test {

// A handle of the interface for the length of a test.
template <class Record, auto allocate, auto release>
class Handle {
  public:
    Handle() { EXPECT_EQ(allocate(&record_), 0); }
    ~Handle() { EXPECT_EQ(release(record_), 0); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    Record *get() const { return record_; }
    operator Record *() const { return record_; }
    Record *operator->() const { return record_; }

  private:
    Record *record_ = nullptr;
};

using Filter = Handle<VantrelFilter, VantrelFilterAllocate, VantrelFilterFree>;
using RetrieveAttributes = Handle<VantrelBulkRetrieveAttributes, VantrelBulkRetrieveAttributesAllocate,
                                  VantrelBulkRetrieveAttributesFree>;
using DeleteAttributes =
    Handle<VantrelBulkDeleteAttributes, VantrelBulkDeleteAttributesAllocate, VantrelBulkDeleteAttributesFree>;
using RetrieveResult =
    Handle<VantrelBulkRetrieveResult, VantrelBulkRetrieveResultAllocate, VantrelBulkRetrieveResultFree>;
using DeleteResult =
    Handle<VantrelBulkDeleteResult, VantrelBulkDeleteResultAllocate, VantrelBulkDeleteResultFree>;
using CreatePayload =
    Handle<VantrelBulkCreatePayload, VantrelBulkCreatePayloadAllocate, VantrelBulkCreatePayloadFree>;
using CreateResult =
    Handle<VantrelBulkCreateResult, VantrelBulkCreateResultAllocate, VantrelBulkCreateResultFree>;

// The bytes of a record of the interface.
template <class Record>
Bytes bytesOfRecord(const Record *record) {
    auto *bytes = reinterpret_cast<const uint8_t *>(record);
    return Bytes(bytes, bytes + sizeof(Record));
}

// The 287 bytes of a filter or a filter slot, without the address of the constant.
inline Bytes imageOf(const void *slot) {
    auto *bytes = static_cast<const uint8_t *>(slot);
    Bytes image(bytes, bytes + 287);
    std::fill_n(image.begin() + 16, 4, uint8_t{0});
    return image;
}

// An image of zero bytes but for the fields given, each at its offset.
inline Bytes imageWith(std::initializer_list<std::pair<size_t, Bytes>> fields) {
    Bytes image(287);
    for (const auto &[offset, bytes] : fields)
        std::copy(bytes.begin(), bytes.end(), image.begin() + static_cast<ptrdiff_t>(offset));
    return image;
}

inline Bytes operator+(Bytes left, const Bytes &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

}  // namespace vantrel::test

#endif
