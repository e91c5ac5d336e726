#include "embedded/operation/record_key.h"

#include "embedded/key/encoding.h"
#include "engine/bytes.h"

namespace vantrel::embedded {

void rawKeyOf(const IndexDefinition &index, const StoredRecord &record, Bytes &rawKey) {
    rawKey.clear();
    if (index.source == KeySource::record) {
        extractRawKey(index, record.data, rawKey);
        return;
    }
    uint8_t time[8];
    storeU64(time, index.source == KeySource::createTime ? record.createTime : record.updateTime);
    rawKey.assign(reinterpret_cast<const char *>(time), sizeof time);
}

bool encodedKeyOf(const IndexDefinition &index, const StoredRecord &record, Bytes &key) {
    thread_local Bytes rawKey;
    rawKeyOf(index, record, rawKey);
    key.clear();
    if (keyIsNull(index, rawKey))
        return false;
    appendEncodedKey(index, rawKey, key);
    return true;
}

}  // namespace vantrel::embedded
