#ifndef VANTREL_EMBEDDED_EXPRESSION_REGULAR_EXPRESSION_H
#define VANTREL_EMBEDDED_EXPRESSION_REGULAR_EXPRESSION_H

#include <regex.h>

#include <cstddef>
#include <memory>

#include "embedded/key/definition.h"

namespace vantrel::embedded {

// A POSIX extended regular expression, found anywhere in a text of bytes, whatever the program's locale.
class RegularExpression {
  public:
    // One that is malformed, or would take too much memory or stack, is thrown as status 62.
    RegularExpression(const Bytes &pattern, bool ignoresCase);

    bool matches(ByteView text) const;

  private:
    struct Free {
        void operator()(regex_t *compiled) const;
    };
    std::unique_ptr<regex_t, Free> compiled_;
};

// An upper bound for the operands that an expression has when its repetitions are written out, or 0 for one
// that is malformed, nested too deeply, or refers back to what it matched.
size_t expandedSize(ByteView pattern);

}  // namespace vantrel::embedded

#endif
