#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_EXTENDED_MODEL_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_EXTENDED_MODEL_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "embedded/expression/extended_request.h"
#include "embedded/key/definition.h"

// What extended operations do, said in the simplest way: records in a list, one rule after another.

namespace vantrel::test {

struct ModelRecord {
    uint64_t address = 0;
    std::string data;
    std::string createTime, updateTime;  // 8 bytes each
};

// An index of one segment.
struct ModelIndex {
    uint16_t offset, length;
    vantrel::embedded::KeyType type;
    const vantrel::embedded::Collation *collation;
    bool descending;
};

// What a term says, beside its bytes in the request.
struct ModelTerm {
    TermFields fields;
    vantrel::embedded::KeyType type;
    const vantrel::embedded::Collation *collation;
    uint8_t patternKind;
    std::string pattern;  // like: 1, not like: 2
};

// One item of the extractor: a field, or a system field where the time is named.
struct ModelItem {
    enum class Kind { field, createTime, updateTime, absolute, minimum, maximum } kind;
    uint16_t offset, length;
};

struct ModelRequest {
    bool isPhysical, isForward, deletes;
    size_t index;
    std::string key;
    RequestFields fields;
    std::vector<ModelTerm> terms;
    std::vector<ModelItem> items;
};

struct ModelOutcome {
    int32_t status = 0;
    std::vector<std::pair<uint64_t, std::string>> records;  // address, bytes
    std::vector<uint64_t> examined;                         // in order
};

class ExtendedModel {
  public:
    std::vector<ModelIndex> indexes;
    std::map<uint64_t, ModelRecord> records;

    // The place that a request begins at or behind; there is always one.
    ModelOutcome run(const ModelRequest &request, uint64_t current) const;

  private:
    std::vector<const ModelRecord *> inOrder(const ModelRequest &request) const;
    int compareKeys(const ModelIndex &index, const std::string &left, const std::string &right) const;
    std::optional<size_t> start(const ModelRequest &request, const std::vector<const ModelRecord *> &order,
                                uint64_t current, int32_t *status) const;
    bool isOutside(const ModelRequest &request, const ModelRecord &record, bool isBelow) const;
};

}  // namespace vantrel::test

#endif
