#include "embedded/expression/extended_request.h"
#include "embedded/fault/scenario.h"

// Reads, counts and locks.

namespace vantrel::test {

namespace {

Step calling(uint32_t operation, const std::string &data, const std::string &key = {}, int32_t keyNumber = 0,
             uint32_t offered = EngineSession::sameAsData, int32_t expected = 0) {
    return {.run = [=](World &world) { return world.call(operation, data, key, keyNumber, offered).status; },
            .expected = expected};
}

Step reading(uint32_t operation, int32_t index = 0, const std::string &key = "ab") {
    return calling(operation, "", key, index, 4);
}

std::string bulkRead() {
    RequestFields fields;
    fields.terms = {{0, 4, 0, patternFlag, patternComparand(3, "a.*[13]r"), joinOr, ""},
                    {14, 1, 2, equalTo, "2", 0, ""}};
    fields.entries = {{2, 0}};
    return fields.bytes();
}

void prepareCounted(World &world) {
    makeFile(world, "file");
    openIt(world);
    fill(world, 300);
}

void prepareRanked(World &world) {
    prepareCounted(world);
    for (int32_t order : {0, 1, -1})
        ASSERT_EQ(world.call(44, u32(5000), "", order, 12).status, 0);
}

std::string statisticsOf(uint32_t number) {
    return "ExSt" + u32(number);
}

}  // namespace

std::vector<Scenario> readScenarios() {
    constexpr uint32_t wait = 100, waitMore = 300;
    return {
        {.name = "ReadByKey",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {reading(5), reading(6), reading(7), reading(12), reading(13), reading(8), reading(11),
                  reading(55), reading(5, 1, "1"), reading(6, 1, "1")}},
        {.name = "ReadByStep",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {reading(33), reading(24), reading(35), reading(34), calling(22, "", "", 0, 8),
                  calling(23, u64(3), "", 0)}},
        {.name = "ReadExtended",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {calling(36, bulkRead(), "", 0, 4096, 9), calling(38, bulkRead(), "", 0, 4096, 9)}},
        {.name = "PercentageFirst",
         .prepare = prepareCounted,
         .begin = openIt,
         .work = {calling(44, u32(5000), "", 0, 12), calling(44, u32(7000), "", 1, 12),
                  calling(45, u64(7), "ag", 0)}},
        {.name = "PercentageUpkeep",
         .prepare = prepareRanked,
         .begin = openAndFind,
         .work = {calling(3, "zz3x", "", -1),
                  {.run = [](World &world) { return world.insert("zy1r"); }},
                  calling(44, u32(10000), "", 0, 12),
                  calling(4, "")}},
        {.name = "Statistics",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {calling(15, std::string(65535, '\0')), calling(65, statisticsOf(1), "", 0, 4096),
                  calling(65, statisticsOf(4), "", 0, 4096), calling(65, statisticsOf(7), "", 0, 4096)}},
        {.name = "SingleLock",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {reading(5 + wait), reading(6 + wait), calling(27, "", "", 0)}},
        {.name = "MultipleLocks",
         .prepare = prepareFile,
         .begin = openIt,
         .work = {reading(5 + waitMore), reading(6 + waitMore), reading(6 + waitMore),
                  calling(27, u64(2), "", -1), calling(27, "", "", -2)}},
        {.name = "LocksOfTwoSessions",
         .prepare = prepareFile,
         .begin =
             [](World &world) {
                 openIt(world);
                 ASSERT_EQ(world.open("file", 0, 1, 1), 0);
             },
         .work =
             {reading(5 + wait),
              {.run =
                   [](World &world) {
                       return world.session(1).call(205, world.block(1), "", "ab", 0, 4).status;
                   },
               .expected = 84},
              {.run =
                   [](World &world) {
                       return world.session(1).call(65, world.block(1), statisticsOf(6), "", 0, 4096).status;
                   }},
              {.run = [](World &world) { return world.find("ac", 0, 100); }}}},
    };
}

}  // namespace vantrel::test
