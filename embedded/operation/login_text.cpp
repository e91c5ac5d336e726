#include "embedded/operation/login_text.h"

#include <string_view>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr std::string_view scheme = "vantrel://";

void require(bool isWellFormed) {
    if (!isWellFormed)
        throw StatusError{VANTREL_STATUS_LOGIN_WRONG_UNIFORM_RESOURCE_INDICATOR_FORMAT};
}

// Cuts the text at the first separator and returns what stood before it.
std::string_view cut(std::string_view &text, char separator) {
    size_t end = text.find(separator);
    std::string_view before = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return before;
}

void checkOptions(std::string_view options) {
    while (!options.empty()) {
        std::string_view option = cut(options, '&');
        size_t equals = option.find('=');
        require(equals != std::string_view::npos && equals != 0);
    }
}

}  // namespace

LoginText parseLoginText(const std::string &text) {
    require(text.starts_with(scheme));
    std::string_view rest = std::string_view(text).substr(scheme.size());
    require(rest.find('/') != std::string_view::npos);
    std::string_view authority = cut(rest, '/');
    LoginText login;
    if (authority.find('@') != std::string_view::npos) {
        login.user = cut(authority, '@');
        require(!login.user.empty() && authority.find('@') == std::string_view::npos);
    }
    login.host = authority;
    login.database = cut(rest, '?');
    require(login.database.find('/') == std::string::npos);
    checkOptions(rest);
    return login;
}

}  // namespace vantrel::embedded
