#include "side.h"

extern "C" {
#include "catalogue/store.h"
}

namespace vantrel::bench {

namespace {

class LibrarySide : public Side {
  public:
    explicit LibrarySide(const std::string &path) : path_(path) {
        check(createStore(&store_, path_.c_str()));
    }
    ~LibrarySide() override { endStore(&store_, false); }

    Delivery load(const Packages &packages, size_t transactionSize) override;
    Delivery readByName(const std::vector<const PackageFields *> &names) override;
    Delivery walkByName() override { return walk(BY_NAME); }
    Delivery walkPhysically() override { return walk(VANTREL_INDEX_NONE); }

  private:
    static void check(bool worked) {
        if (!worked)
            giveUp("the library failed");
    }
    void takeRecord(Delivery &delivery, int32_t length);
    Delivery walk(VantrelIndex index);

    std::string path_;
    Store store_;
    PackageRecord record_;
};

Delivery LibrarySide::load(const Packages &packages, size_t transactionSize) {
    Delivery delivery;
    for (size_t i = 0; i < packages.size(); i++) {
        if (i % transactionSize == 0)
            check(beginTransaction(&store_));
        const Package &package = packages[i];
        VantrelStatus status =
            insertPackage(&store_, &package.fields, package.text.data(), package.text.size());
        if (status == VANTREL_STATUS_NO_ERROR)
            delivery.add(package.text.size());
        else if (status != VANTREL_STATUS_DUPLICATE_KEY_VALUE)
            check(complainOfFile(&store_, "cannot insert into"));
        if ((i + 1) % transactionSize == 0 || i + 1 == packages.size())
            check(endTransaction(&store_));
    }
    check(addIndexes(&store_));
    return delivery;
}

void LibrarySide::takeRecord(Delivery &delivery, int32_t length) {
    if (length < 0)
        check(complainOfFile(&store_, "cannot read"));
    delivery.add(static_cast<size_t>(length));
}

Delivery LibrarySide::readByName(const std::vector<const PackageFields *> &names) {
    Delivery delivery;
    for (const PackageFields *fields : names) {
        NameKey key = nameKey(fields->name, fields->version);
        takeRecord(delivery,
                   VantrelFileRecordRetrieve(store_.file, VANTREL_COMPARISON_EQUAL, BY_NAME, &key, sizeof key,
                                             &record_, sizeof record_, VANTREL_LOCK_MODE_NONE));
    }
    return delivery;
}

Delivery LibrarySide::walk(VantrelIndex index) {
    Delivery delivery;
    int32_t length = VantrelFileRecordRetrieveFirst(store_.file, index, nullptr, 0, &record_, sizeof record_,
                                                    VANTREL_LOCK_MODE_NONE);
    while (length >= 0 || VantrelFileGetLastStatusCode(store_.file) != VANTREL_STATUS_END_OF_FILE) {
        takeRecord(delivery, length);
        length = VantrelFileRecordRetrieveNext(store_.file, nullptr, 0, &record_, sizeof record_,
                                               VANTREL_LOCK_MODE_NONE);
    }
    return delivery;
}

}  // namespace

std::unique_ptr<Side> makeLibrarySide(const std::string &path) {
    return std::make_unique<LibrarySide>(path);
}

}  // namespace vantrel::bench
