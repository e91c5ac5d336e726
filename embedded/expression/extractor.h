#ifndef VANTREL_EMBEDDED_EXPRESSION_EXTRACTOR_H
#define VANTREL_EMBEDDED_EXPRESSION_EXTRACTOR_H

#include <optional>
#include <vector>

#include "embedded/expression/field.h"
#include "embedded/expression/field_function.h"
#include "embedded/expression/request_reader.h"
#include "embedded/expression/value_order.h"

namespace vantrel::embedded {

// What comes back of the records that pass: fields one after another, as they are, through functions, or the
// smallest and largest of all.
class Extractor {
  public:
    // Takes so many entries off the request; anything malformed is thrown as the reader's status.
    Extractor(RequestReader &reader, size_t entryCount);

    // The bytes of one reply record when no field is cut.
    size_t longest() const { return longest_; }
    // How far into the record's bytes the items look.
    size_t reach() const { return reach_; }
    // Whether all records that pass give one reply record together.
    bool aggregates() const { return aggregates_; }

    // Writes the record's reply, at most `longest` bytes, and returns its length.
    size_t extract(const RecordView &record, uint8_t *reply);

    // Adds a record to the aggregates. Items that are none keep the value of the last record.
    void accumulate(const RecordView &record);
    size_t extractAggregates(uint8_t *reply) const;

  private:
    struct Aggregate {
        bool isMaximum;
        ValueOrder order;
        ValueOrder::Prepared best;
    };
    struct Item {
        Field field;
        std::optional<FieldFunction> function;
        std::optional<Aggregate> aggregate;
        Bytes kept;  // the reply so far of a request that aggregates
    };

    size_t readItem(RequestReader &reader, size_t entriesLeft);
    void addItem(RequestReader &reader, Item item);
    static size_t write(const Item &item, const RecordView &record, uint8_t *reply);
    static void keepBest(Item &item, const RecordView &record);

    std::vector<Item> items_;
    size_t longest_ = 0;
    size_t reach_ = 0;
    bool aggregates_ = false;
};

}  // namespace vantrel::embedded

#endif
