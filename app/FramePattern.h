/// File names with a number in them.
#pragma once

#include <optional>
#include <string>

namespace Kavra::App {

/// A name with exactly one `%d`, `%3d` or `%03d` in it; `%%` stands for a percent sign.
class FramePattern {
public:
    /// Nothing when the text is no such name.
    static std::optional<FramePattern> Parse(const std::string& text);

    std::string Name(int number) const;

private:
    std::string mBefore;
    std::string mAfter;
    std::size_t mWidth = 0;
    char mFill = ' ';
};

}  // namespace Kavra::App
