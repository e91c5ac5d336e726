#include <algorithm>
#include <vector>

#include "embedded/expression/regular_expression.h"

namespace vantrel::embedded {

namespace {

constexpr size_t deepestNesting = 100;
constexpr size_t tooLarge = 1 << 15;  // its square is a number everywhere

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// Reads an expression only as far as its size needs; what is malformed otherwise, the compiler finds.
class SizeReader {
  public:
    explicit SizeReader(ByteView pattern) : pattern_(pattern) {}

    size_t read() {
        while (isSound_ && at_ < pattern_.size())
            readNext(pattern_[at_++]);
        if (!isSound_ || !enclosing_.empty())
            return 0;
        return group_.size + 1;
    }

  private:
    // What a parenthesis encloses so far, and the last operand in it, which a repetition multiplies.
    struct Group {
        size_t size = 0;
        size_t last = 0;
    };

    void readNext(char character) {
        switch (character) {
            case '(':
                isSound_ = enclosing_.size() < deepestNesting;
                enclosing_.push_back(group_);
                group_ = {};
                return;
            case ')':
                return closeGroup();
            case '[':
                skipBrackets();
                return addOperand(1);
            case '\\':
                isSound_ = at_ < pattern_.size() && !isDigit(pattern_[at_]);
                ++at_;
                return addOperand(1);
            case '{':
                return repeat(readCount());
            case '*':
            case '+':
            case '?':
                return repeat(2);
            default:
                return addOperand(1);
        }
    }

    void addOperand(size_t size) {
        group_.size = std::min(group_.size + size, tooLarge);
        group_.last = size;
    }

    void repeat(size_t count) {
        size_t repeated = std::min(std::max<size_t>(group_.last, 1) * count, tooLarge);
        group_.size = std::min(group_.size - group_.last + repeated, tooLarge);
        group_.last = std::min(repeated, group_.size);
    }

    // A parenthesis that closes nothing stands for itself.
    void closeGroup() {
        if (enclosing_.empty())
            return addOperand(1);
        size_t size = group_.size + 1;
        group_ = enclosing_.back();
        enclosing_.pop_back();
        addOperand(size);
    }

    // The larger bound of a repetition, and one for what it may add.
    size_t readCount() {
        size_t largest = 0, number = 0;
        while (at_ < pattern_.size() && (isDigit(pattern_[at_]) || pattern_[at_] == ',')) {
            number = isDigit(pattern_[at_])
                         ? std::min(number * 10 + static_cast<size_t>(pattern_[at_] - '0'), tooLarge)
                         : 0;
            largest = std::max(largest, number);
            ++at_;
        }
        return largest + 2;
    }

    void skipBrackets() {
        if (at_ < pattern_.size() && pattern_[at_] == '^')
            ++at_;
        if (at_ < pattern_.size() && pattern_[at_] == ']')
            ++at_;
        while (at_ < pattern_.size() && pattern_[at_] != ']')
            skipBracketElement();
        isSound_ = at_ < pattern_.size();
        ++at_;
    }

    // Classes and the like end with their own mark in front of a bracket.
    void skipBracketElement() {
        bool isOpening = pattern_[at_++] == '[' && at_ < pattern_.size();
        if (!isOpening)
            return;
        char mark = pattern_[at_];
        if (mark != ':' && mark != '.' && mark != '=')
            return;
        const char ending[] = {mark, ']'};
        size_t end = pattern_.find(ByteView(ending, sizeof ending), at_ + 1);
        at_ = end == ByteView::npos ? pattern_.size() : end + sizeof ending;
    }

    ByteView pattern_;
    size_t at_ = 0;
    bool isSound_ = true;
    Group group_;
    std::vector<Group> enclosing_;
};

}  // namespace

size_t expandedSize(ByteView pattern) {
    return SizeReader(pattern).read();
}

}  // namespace vantrel::embedded
