#ifndef VANTREL_TESTS_EMBEDDED_MODEL_PARTICIPANT_SESSION_H
#define VANTREL_TESTS_EMBEDDED_MODEL_PARTICIPANT_SESSION_H

#include <sstream>
#include <string>

#include "vantrel.h"

namespace vantrel::test {

// What a participant does inside its process.
class ParticipantSession {
  public:
    explicit ParticipantSession(const std::string &path);

    std::string perform(const std::string &command);

  private:
    struct NumberRecord {
        uint32_t number;
        uint32_t value;
    };

    std::string performOnFile(const std::string &verb, std::istringstream &arguments);
    VantrelStatus open(VantrelFile **file);
    VantrelStatus change(const std::string &verb, std::istringstream &arguments);
    std::string read(uint32_t number, VantrelLockMode lockMode);
    std::string next(VantrelLockMode lockMode);
    std::string readingOutcome(int32_t length, const NumberRecord &record) const;
    std::string contents();
    std::string count(uint32_t transactions);
    std::string watch(uint32_t times);
    std::string useInChild();

    std::string path_;
    VantrelClient *client_ = nullptr;
    VantrelFile *file_ = nullptr;
};

}  // namespace vantrel::test

#endif
