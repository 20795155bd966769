#include "Captions.h"

#include "ContactSheet.h"
#include "Lettering.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace Kavra::App {
namespace {

constexpr Ink kNameInk = {{0.92F, 0.92F, 0.92F}};
constexpr Ink kFactsInk = {{0.62F, 0.62F, 0.62F}};
constexpr Ink kReasonInk = {{1, 0.85F, 0.8F}};
constexpr Ink kPlateInk = {{0.12F, 0.06F, 0.06F}, 0.85F};
constexpr Display kBoxColour = {64 / 255.0F, 32 / 255.0F, 32 / 255.0F};
constexpr Display kCrossColour = {224 / 255.0F, 64 / 255.0F, 64 / 255.0F};

constexpr std::string_view kPoints = "...";
constexpr float kLineHeight = 1.75F;  // of the size of letters

float CaptionSize(int cellWidth) {
    return std::clamp(static_cast<float>(cellWidth) / 22, 5.0F, 11.0F);
}

/// UTF-8 goes on in such bytes.
bool IsInsideLetter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// As many bytes of a text, whole letters, as are `width` pixels long at most; one letter at least.
std::size_t FittingBytes(std::string_view text, float size, float width) {
    std::size_t fitting = 0;
    for (std::size_t end = 1; end <= text.size(); ++end) {
        if (end < text.size() && IsInsideLetter(text[end])) continue;
        if (fitting > 0 && TextWidth(text.substr(0, end), size) > width) break;
        fitting = end;
    }
    return fitting;
}

/// Where a line of at most so many bytes ends: behind its last comma, else its last word, else where it is full.
std::size_t BreakBefore(std::string_view text, std::size_t bytes) {
    const std::string_view line = text.substr(0, bytes + 1);
    const std::size_t comma = line.rfind(", "), space = line.rfind(' ');
    if (comma != std::string_view::npos) return comma + 1;
    return space != std::string_view::npos && space > 0 ? space : bytes;
}

/// Whether a pixel is on the edge or one of the diagonals, at least one pixel wide in every row and column.
bool IsOnCross(int x, int y, int width, int height) {
    if (x == 0 || y == 0 || x == width - 1 || y == height - 1) return true;
    const auto isOnDiagonal = [&](std::int64_t column) {
        const std::int64_t distance = column * (height - 1) - std::int64_t{y} * (width - 1);
        return std::abs(distance) <= std::max(width, height);
    };
    return isOnDiagonal(x) || isOnDiagonal(width - 1 - x);
}

/// Text in the middle of a canvas, on a dark plate.
void DrawOnPlate(Canvas& canvas, const std::vector<std::string>& lines, float size) {
    const float middle = static_cast<float>(canvas.Width()) / 2;
    const float height = static_cast<float>(lines.size()) * size * kLineHeight;
    const float top = (static_cast<float>(canvas.Height()) - height) / 2;
    float halfWidth = 0;
    for (const std::string& line : lines)
        halfWidth = std::max(halfWidth, TextWidth(line, size) / 2);
    canvas.RoundedBox({middle - halfWidth - size, top - size / 2, middle + halfWidth + size, top + height + size / 4},
                      size / 2, kPlateInk);
    float base = top + size;
    for (const std::string& line : lines) {
        DrawTextCentred(canvas, {middle, base}, line, {.size = size, .ink = kReasonInk});
        base += size * kLineHeight;
    }
}

}  // namespace

std::vector<std::string> Wrapped(const std::string& text, float size, float width, std::size_t most) {
    std::vector<std::string> lines;
    std::string_view rest = text;
    while (!rest.empty() && lines.size() < most) {
        std::size_t bytes = FittingBytes(rest, size, width);
        if (bytes < rest.size()) bytes = BreakBefore(rest, bytes);
        lines.emplace_back(rest.substr(0, bytes));
        rest.remove_prefix(std::min(rest.find_first_not_of(' ', bytes), rest.size()));
    }
    if (!rest.empty() && !lines.empty()) {
        std::string& last = lines.back();
        last.resize(FittingBytes(last, size, width - TextWidth(kPoints, size)));
        last += kPoints;
    }
    return lines;
}

std::string Shortened(const std::string& name, float size, float width) {
    if (TextWidth(name, size) <= width) return name;
    const float room = width - TextWidth(kPoints, size);
    const std::size_t head = FittingBytes(name, size, room / 2);
    std::size_t tail = head;
    while (tail < name.size() &&
           (IsInsideLetter(name[tail]) || TextWidth(std::string_view(name).substr(tail), size) > room / 2))
        ++tail;
    return name.substr(0, head) + std::string(kPoints) + name.substr(tail);
}

int CaptionHeight(int cellWidth) {
    return static_cast<int>(std::ceil(3 * kLineHeight * CaptionSize(cellWidth)));
}

LoadedImage Caption(const std::string& name, const std::string& facts, int width, int height) {
    Canvas canvas(width, height, kSheetColour);
    const float size = CaptionSize(width), room = static_cast<float>(width);
    float base = size * 1.25F;
    const auto draw = [&](const std::string& line, const Ink& ink) {
        DrawTextCentred(canvas, {room / 2, base}, line, {.size = size, .ink = ink});
        base += size * kLineHeight;
    };
    draw(Shortened(name, size, room), kNameInk);
    for (const std::string& line : Wrapped(facts, size, room, 2))
        draw(line, kFactsInk);
    return canvas.ToImage();
}

LoadedImage CrossedBox(vec2<int> size, const std::string& reason) {
    constexpr int kMinWidth = 60, kMinHeight = 30;  // for text
    Canvas canvas(size.x, size.y, kBoxColour);
    for (int y = 0; y < size.y; ++y) {
        for (int x = 0; x < size.x; ++x) {
            if (IsOnCross(x, y, size.x, size.y)) canvas.At(x, y) = kCrossColour;
        }
    }
    if (size.x >= kMinWidth && size.y >= kMinHeight) {
        const float letters = std::clamp(static_cast<float>(size.x) / 24, 5.0F, 11.0F);
        const auto most = static_cast<std::size_t>(static_cast<float>(size.y) * 0.8F / (letters * kLineHeight));
        DrawOnPlate(canvas, Wrapped(reason, letters, static_cast<float>(size.x) * 0.85F, most), letters);
    }
    return canvas.ToImage();
}

}  // namespace Kavra::App
