/// Any bytes as the list of a batch, in each of its forms: every line is a file to be made, or something is wrong with it.
#include "BatchLines.h"
#include "FuzzFile.h"
#include "Usage.h"

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

/// What the command says of a word that is none of some: no matter here.
std::string Kavra::App::NoneOf(std::string_view word, std::span<const std::string> words) {
    return std::string(word) + (words.empty() ? "" : " is none of these");
}

namespace {

using Kavra::App::BatchLine;
using Kavra::App::BatchLines;

void Check(const BatchLine& line, bool isManifest) {
    if (line.text.size() > BatchLines::kMaxLine) std::abort();
    if (line.wrong.empty() && line.input.empty()) std::abort();
    if (!isManifest && !(line.work.empty() && line.output.empty())) std::abort();
    for (const std::string& field : {line.input, line.output, line.work}) {
        if (field.contains('\0')) std::abort();
    }
    if (line.input == "-" || line.input.starts_with('@')) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Kavra::Fuzz::FuzzFile file(std::span(data, size), ".list");
    for (const auto form :
         {BatchLines::Form::kNames, BatchLines::Form::kNamesEndingInNul, BatchLines::Form::kManifest}) {
        try {
            BatchLines lines(file.Path().string(), form);
            std::size_t count = 0;
            while (const auto line = lines.Next()) {
                Check(*line, form == BatchLines::Form::kManifest);
                if (++count > size) std::abort();
            }
        } catch (const Kavra::App::ListError&) {
            continue;
        }
    }
    return 0;
}
