#include "Lettering.h"

#include <kavra/objects/OS.h>

#include <array>
#include <string>
#include <vector>

namespace Kavra::App {
namespace {

/// A glyph as lines through the points of a grid, two digits a point: x from the left, y from the top. Capitals stand
/// on y = 6, small letters begin at y = 2, tails end at y = 8. Lines are separated by spaces; a point alone is a dot.
struct Glyph {
    wchar_t letter;
    int width;
    std::string_view lines;
};

constexpr std::array kGlyphs = {
    Glyph{L' ', 2, ""},
    Glyph{L'0', 4, "100105163645413010"},
    Glyph{L'1', 4, "122026"},
    Glyph{L'2', 4, "01103041420646"},
    Glyph{L'3', 4, "01103041423313 334445361605"},
    Glyph{L'4', 4, "36300444"},
    Glyph{L'5', 4, "400002324345361605"},
    Glyph{L'6', 4, "3010010516364544331304"},
    Glyph{L'7', 4, "004016"},
    Glyph{L'8', 4, "1302011030414233130405163645443313"},
    Glyph{L'9', 4, "4233130201103041453616"},
    Glyph{L'A', 4, "062046 1434"},
    Glyph{L'B', 4, "000636454433 033342413000"},
    Glyph{L'C', 4, "4130100105163645"},
    Glyph{L'D', 4, "00062645412000"},
    Glyph{L'E', 4, "40000646 0333"},
    Glyph{L'F', 4, "400006 0333"},
    Glyph{L'G', 4, "41301001051636454323"},
    Glyph{L'H', 4, "0006 4046 0343"},
    Glyph{L'I', 0, "0006"},
    Glyph{L'J', 3, "3035261605"},
    Glyph{L'K', 4, "0006 400346"},
    Glyph{L'L', 3, "000636"},
    Glyph{L'M', 4, "0600244046"},
    Glyph{L'N', 4, "06004640"},
    Glyph{L'O', 4, "100105163645413010"},
    Glyph{L'P', 4, "06003041423303"},
    Glyph{L'Q', 4, "100105163645413010 3446"},
    Glyph{L'R', 4, "06003041423303 2346"},
    Glyph{L'S', 4, "413010010213334445361605"},
    Glyph{L'T', 4, "0040 2026"},
    Glyph{L'U', 4, "000516364540"},
    Glyph{L'V', 4, "002640"},
    Glyph{L'W', 6, "0016325660"},
    Glyph{L'X', 4, "0046 4006"},
    Glyph{L'Y', 4, "002340 2326"},
    Glyph{L'Z', 4, "00400646"},
    Glyph{L'a', 4, "4246 4332120305163645"},
    Glyph{L'b', 4, "0006 0312324345361605"},
    Glyph{L'c', 4, "4332120305163645"},
    Glyph{L'd', 4, "4046 4332120305163645"},
    Glyph{L'e', 4, "04444332120305163645"},
    Glyph{L'f', 3, "30201116 0232"},
    Glyph{L'g', 4, "4247381807 4332120305163645"},
    Glyph{L'h', 4, "0006 0312324346"},
    Glyph{L'i', 0, "0206 0000"},
    Glyph{L'j', 1, "121708 1010"},
    Glyph{L'k', 3, "0006 320436"},
    Glyph{L'l', 0, "0006"},
    Glyph{L'm', 6, "0206 0312223336 3342526366"},
    Glyph{L'n', 4, "0206 0312324346"},
    Glyph{L'o', 4, "120305163645433212"},
    Glyph{L'p', 4, "0208 0312324345361605"},
    Glyph{L'q', 4, "4248 4332120305163645"},
    Glyph{L'r', 3, "0206 031232"},
    Glyph{L's', 4, "43321203143445361605"},
    Glyph{L't', 3, "10152636 0232"},
    Glyph{L'u', 4, "0205163645 4246"},
    Glyph{L'v', 4, "022642"},
    Glyph{L'w', 6, "0216335662"},
    Glyph{L'x', 4, "0246 4206"},
    Glyph{L'y', 4, "0226 421808"},
    Glyph{L'z', 4, "02420646"},
    Glyph{L'.', 0, "0606"},
    Glyph{L',', 1, "1607"},
    Glyph{L':', 0, "0303 0606"},
    Glyph{L';', 1, "1313 1607"},
    Glyph{L'!', 0, "0004 0606"},
    Glyph{L'?', 4, "01103041422324 2626"},
    Glyph{L'+', 4, "0343 2125"},
    Glyph{L'-', 4, "0343"},
    Glyph{L'=', 4, "0242 0444"},
    Glyph{L'_', 4, "0747"},
    Glyph{L'/', 3, "3006"},
    Glyph{L'%', 5, "5006 0010110100 4555564645"},
    Glyph{L'(', 1, "10010516"},
    Glyph{L')', 1, "00111506"},
    Glyph{L'[', 1, "10000616"},
    Glyph{L']', 1, "00101606"},
    Glyph{L'#', 4, "1016 3036 0242 0444"},
    Glyph{L'~', 4, "04133443"},
    Glyph{L'\'', 0, "0001"},
    Glyph{L'°', 2, "1001122110"},
};

constexpr Glyph kUnknown = {0, 4, "0006464000"};
constexpr float kGridHeight = 6, kGap = 1.9F;  // grid units

const Glyph& GlyphOf(wchar_t letter) {
    const auto found = std::ranges::find(kGlyphs, letter, &Glyph::letter);
    return found == kGlyphs.end() ? kUnknown : *found;
}

void DrawGlyph(Canvas& canvas, Point start, const Glyph& glyph, float unit, float thickness, const Ink& ink) {
    std::vector<Point> line;
    const auto finish = [&] {
        if (!line.empty()) canvas.Stroke(line, thickness, ink);
        line.clear();
    };
    for (std::size_t i = 0; i < glyph.lines.size(); ++i) {
        if (glyph.lines[i] == ' ') {
            finish();
        } else {
            const auto x = static_cast<float>(glyph.lines[i] - '0');
            const auto y = static_cast<float>(glyph.lines[++i] - '0');
            line.push_back({start.x + x * unit, start.y + (y - kGridHeight) * unit});
        }
    }
    finish();
}

void DrawLetters(Canvas& canvas, Point start, const std::wstring& letters, float size, float thickness,
                 const Ink& ink) {
    const float unit = size / kGridHeight;
    for (const wchar_t letter : letters) {
        const Glyph& glyph = GlyphOf(letter);
        DrawGlyph(canvas, start, glyph, unit, thickness, ink);
        start.x += (static_cast<float>(glyph.width) + kGap) * unit;
    }
}

}  // namespace

float TextWidth(std::string_view text, float size) {
    float units = 0;
    for (const wchar_t letter : OS::FromUtf8(std::string(text).c_str()))
        units += static_cast<float>(GlyphOf(letter).width) + kGap;
    return std::max(units - kGap, 0.0F) * size / kGridHeight;
}

void DrawText(Canvas& canvas, Point start, std::string_view text, const Lettering& lettering) {
    const std::wstring letters = OS::FromUtf8(std::string(text).c_str());
    const float thickness = lettering.size * lettering.weight;
    if (lettering.isCased) DrawLetters(canvas, start, letters, lettering.size, thickness + 3, {{0, 0, 0}, 0.55F});
    DrawLetters(canvas, start, letters, lettering.size, thickness, lettering.ink);
}

void DrawTextCentred(Canvas& canvas, Point middleOfBaseLine, std::string_view text, const Lettering& lettering) {
    middleOfBaseLine.x -= TextWidth(text, lettering.size) / 2;
    DrawText(canvas, middleOfBaseLine, text, lettering);
}

void DrawTextRight(Canvas& canvas, Point end, std::string_view text, const Lettering& lettering) {
    end.x -= TextWidth(text, lettering.size);
    DrawText(canvas, end, text, lettering);
}

}  // namespace Kavra::App
