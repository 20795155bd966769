#include "SizeOptions.h"

#include "Sizes.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

namespace Kavra::App {
namespace {

using Size = vec2<long long>;

/// `length` x `part` / `whole`, rounded half up, 1 at least. Each number is below 2^31 and not negative, `whole` not 0.
long long Scaled(long long length, long long part, long long whole) {
    return std::max(1LL, (2 * length * part + whole) / (2 * whole));
}

Size Scaled(Size size, long long part, long long whole) {
    return {Scaled(size.x, part, whole), Scaled(size.y, part, whole)};
}

/// The proportions of `own` with one of its sides as long as that of `box`, never enlarged: the side by which it comes
/// out `smaller`, or the other one. A side of 0 does not count.
Size Shrunk(Size own, Size box, bool smaller) {
    const bool isWidthSmaller = box.x * own.y <= box.y * own.x;
    const bool byWidth = box.y == 0 || (box.x != 0 && isWidthSmaller == smaller);
    const auto [part, whole] = byWidth ? std::pair(box.x, own.x) : std::pair(box.y, own.y);
    return part < whole ? Scaled(own, part, whole) : own;
}

}  // namespace

void SizeWish::AddTo(CLI::App& command, const std::string& what, bool besideSize) {
    const auto add = [&](const std::string& name, const std::string& type, const auto& parse, const std::string& help) {
        return command.add_option_function<std::string>(name, parse, help)->type_name(type);
    };
    const auto takeBox = [this](Kind taken, std::pair<int, int> size) {
        kind = taken;
        std::tie(box.x, box.y) = size;
    };
    const std::array options = {
        add(
            "--fit", "WxH", [=](const std::string& text) { takeBox(Kind::kFit, ParseFit(text)); },
            "The box, in pixels, that " + what +
                " is shrunk into, in its proportions; a side of 0 is free. Nothing is enlarged"),
        add(
            "--fill", "WxH", [=](const std::string& text) { takeBox(Kind::kFill, ParseSize(text, 1, "--fill")); },
            "The box that " + what +
                " is shrunk to cover, in its proportions; what is beyond is cut off on both sides alike. Nothing is "
                "enlarged"),
        add(
            "--scale", "PERCENT",
            [this](const std::string& text) {
                kind = Kind::kScale;
                millionths = ParsePercentage(text, "--scale");
            },
            "The part of its size that " + what + " is brought to, smaller or larger, as 50%")};
    for (CLI::Option* const option : options) {
        for (CLI::Option* const other : options) {
            if (other != option) option->excludes(other);
        }
        CLI::Option* const size = besideSize ? nullptr : command.get_option_no_throw("--size");
        if (size != nullptr) size->excludes(option);
    }
}

std::string SizeWish::Option() const {
    switch (kind) {
        case Kind::kNone:
            break;
        case Kind::kFit:
            return "--fit";
        case Kind::kFill:
            return "--fill";
        case Kind::kScale:
            return "--scale";
    }
    return {};
}

TargetSize SizeWish::Of(vec2<int> own) const {
    constexpr long long kWhole = 1'000'000;
    const Size whole{own.x, own.y}, bounds{box.x, box.y};
    switch (kind) {
        case Kind::kNone:
            break;
        case Kind::kFit: {
            const Size size = Shrunk(whole, bounds, true);
            return {size, size};
        }
        case Kind::kFill: {
            const Size size = Shrunk(whole, bounds, false);
            return {size, {std::min(size.x, bounds.x), std::min(size.y, bounds.y)}};
        }
        case Kind::kScale: {
            const Size size = Scaled(whole, millionths, kWhole);
            return {size, size};
        }
    }
    return {whole, whole};
}

SizeWish FitInto(vec2<int> box) {
    return {.kind = SizeWish::Kind::kFit, .box = box};
}

}  // namespace Kavra::App
