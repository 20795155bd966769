/// Names of outputs that are made of the names of inputs.
#pragma once

#include "Inputs.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// A name with fields: `{dir}` the input's folder, `{stem}` its name without `{ext}`, its extension without the dot,
/// `{name}` both with the dot, `{index}` its place among the inputs from 0, as `{index:04}` with so many digits at least.
/// `{{` and `}}` are braces.
class OutputPattern {
public:
    /// Whether a text has braces, and so has to be a pattern.
    static bool IsPattern(std::string_view text);

    /// Throws `std::runtime_error`, which says what is wrong with the text.
    explicit OutputPattern(std::string_view text);

    /// The output of an input. Where `to` is not empty, it is the extension in place of the input's own. Throws
    /// `std::runtime_error` where the name would lead out of the folder that the pattern begins with.
    std::filesystem::path Name(const std::string& input, std::size_t index, const std::string& to) const;

private:
    struct Piece {
        std::string text;   ///< before the field
        std::string field;  ///< empty at the end
        std::size_t digits = 0;
    };

    std::vector<Piece> mPieces;
};

/// What each input of a command becomes: by a pattern, in a folder, or a file.
struct OutputWish {
    std::string out;
    std::string to;                                             ///< extension in a folder
    bool toFolder = false;                                      ///< where it is no pattern
    const std::vector<std::filesystem::path>* given = nullptr;  ///< the outputs themselves, one an input, instead
};

/// Fills in the outputs. What is wrong with them, which is a wrong usage; empty when nothing is.
std::string PlanOutputs(const std::vector<Input>& inputs, const OutputWish& wish,
                        std::vector<std::filesystem::path>& outputs);

}  // namespace Kavra::App
