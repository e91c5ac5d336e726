#ifndef VANTREL_EMBEDDED_OPERATION_LOGIN_TEXT_H
#define VANTREL_EMBEDDED_OPERATION_LOGIN_TEXT_H

#include <string>

namespace vantrel::embedded {

struct LoginText {
    std::string user;
    std::string host;
    std::string database;
};

// Reads vantrel://[user@][host]/[database][?option=value[&option=value]...]. Any other text is thrown as
// status 175.
LoginText parseLoginText(const std::string &text);

}  // namespace vantrel::embedded

#endif
