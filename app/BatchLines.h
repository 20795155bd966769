/// What a batch is to work on, a line at a time, however many there are.
#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>

namespace Kavra::App {

/// One file to be made.
struct BatchLine {
    std::string input;
    std::string output;  ///< empty where a pattern makes it
    std::string work;    ///< a command with its options; empty where the batch's own is meant
    std::string place;   ///< "list:17"
    std::string wrong;   ///< what is wrong with the line, which is then no work; empty when nothing is
    std::string text;    ///< the line as it stands
};

/// The whole list cannot be read, or is none.
struct ListError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads lists of names, and manifests: lines of JSON objects with `input`, `output` and `do`, or the bytes of names in
/// `inputBytes` and `outputBytes`. Anybody may have written them: no line takes more memory than `kMaxLine` bytes, none is
/// nested, and what is wrong with one is said of it alone.
class BatchLines {
public:
    static constexpr std::size_t kMaxLine = 1 << 18;

    enum class Form { kNames, kNamesEndingInNul, kManifest };

    /// Opens a list; "-" is standard input. Throws `ListError`.
    BatchLines(const std::string& name, Form form);
    ~BatchLines();
    BatchLines(const BatchLines&) = delete;
    BatchLines& operator=(const BatchLines&) = delete;

    /// The next line that is not empty; nothing at the end. A name that options or lists begin like gets its folder.
    /// Throws `ListError`.
    std::optional<BatchLine> Next();

private:
    bool ReadLine(std::string& line, bool& isWhole);

    std::string mName;
    Form mForm;
    std::FILE* mFile;
    std::size_t mNumber = 0;
};

}  // namespace Kavra::App
