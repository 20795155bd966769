#include "FramePattern.h"

namespace Kavra::App {

std::optional<FramePattern> FramePattern::Parse(const std::string& text) {
    FramePattern pattern;
    bool found = false;
    const auto at = [&text](std::size_t i) { return i < text.size() ? text[i] : '\0'; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string& part = found ? pattern.mAfter : pattern.mBefore;
        if (text[i] != '%') {
            part += text[i];
            continue;
        }
        ++i;
        if (at(i) == '%') {
            part += '%';
            continue;
        }
        if (found) return std::nullopt;
        found = true;
        if (at(i) == '0') pattern.mFill = text[i++];
        if (at(i) >= '1' && at(i) <= '9') pattern.mWidth = static_cast<std::size_t>(text[i++] - '0');
        if (at(i) != 'd') return std::nullopt;
    }
    return found ? std::optional(pattern) : std::nullopt;
}

std::string FramePattern::Name(int number) const {
    std::string digits = std::to_string(number);
    if (digits.size() < mWidth) digits.insert(0, mWidth - digits.size(), mFill);
    return mBefore + digits + mAfter;
}

}  // namespace Kavra::App
