#include "embedded/expression/regular_expression.h"

#include <locale.h>

#include <new>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t longestPattern = 1024;
constexpr size_t largestExpression = 16384;

// The thread has the "C" locale as long as the scope lasts.
class PlainLocale {
  public:
    PlainLocale() : previous_(uselocale(plain())) {}
    ~PlainLocale() { uselocale(previous_); }
    PlainLocale(const PlainLocale &) = delete;
    PlainLocale &operator=(const PlainLocale &) = delete;

  private:
    static locale_t plain() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t previous_;
};

bool sizeIsAcceptable(const Bytes &pattern) {
    if (pattern.size() > longestPattern)
        return false;
    size_t size = expandedSize(pattern);
    return size != 0 && size <= largestExpression;
}

}  // namespace

void RegularExpression::Free::operator()(regex_t *compiled) const {
    regfree(compiled);
    delete compiled;
}

RegularExpression::RegularExpression(const Bytes &pattern, bool ignoresCase) {
    require(sizeIsAcceptable(pattern), VANTREL_STATUS_INVALID_GET_EXPRESSION);
    auto compiled = std::make_unique<regex_t>();
    PlainLocale locale;
    int flags = REG_EXTENDED | REG_NOSUB | (ignoresCase ? REG_ICASE : 0);
    int error = regcomp(compiled.get(), pattern.c_str(), flags);
    if (error == REG_ESPACE)
        throw std::bad_alloc();
    require(error == 0, VANTREL_STATUS_INVALID_GET_EXPRESSION);
    compiled_.reset(compiled.release());
}

bool RegularExpression::matches(ByteView text) const {
    PlainLocale locale;
    regmatch_t range{};
    range.rm_eo = static_cast<regoff_t>(text.size());
    int error = regexec(compiled_.get(), text.empty() ? "" : text.data(), 1, &range, REG_STARTEND);
    if (error == REG_ESPACE)
        throw std::bad_alloc();
    return error == 0;
}

}  // namespace vantrel::embedded
