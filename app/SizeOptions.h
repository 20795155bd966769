/// Sizes that keep the proportions of a picture.
#pragma once

#include <kavra/objects/Vec.h>

#include <CLI/App.hpp>

#include <string>

namespace Kavra::App {

/// What becomes of a picture: all of it is brought to a size, of which the middle is kept.
struct TargetSize {
    vec2<long long> scaled;
    vec2<long long> kept;
};

/// One of `--fit`, `--fill` and `--scale`. Sizes are those of the picture as it comes out, turned as it is. They are
/// rounded half up, to 1 at least.
struct SizeWish {
    enum class Kind { kNone, kFit, kFill, kScale };

    Kind kind = Kind::kNone;
    vec2<int> box;             ///< to fit into or to fill; to fit into, a side of 0 is free
    long long millionths = 0;  ///< of each side

    /// Adds the three options, of which one may be given; `what` is what they bring to a size. Where the command has
    /// `--size` already, that is a fourth, unless `besideSize`.
    void AddTo(CLI::App& command, const std::string& what, bool besideSize = false);

    bool IsGiven() const { return kind != Kind::kNone; }
    /// "--fit", "--fill" or "--scale".
    std::string Option() const;

    /// The size for a picture of `own` pixels, each side 1 or more; its own where nothing is given.
    TargetSize Of(vec2<int> own) const;
};

/// The wish for the largest size inside `box`.
SizeWish FitInto(vec2<int> box);

}  // namespace Kavra::App
