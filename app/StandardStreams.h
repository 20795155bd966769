/// The program's standard output and standard error.
#pragma once

#include <string>
#include <string_view>

namespace Kavra::App {

/// Sees to it that all three standard streams are open, so that no file of the program takes the place of a closed
/// one. To be called before anything is opened.
void HoldStandardStreams();

/// Writes data to standard output. What is lost is remembered for `OutputLoss`; where nobody reads any longer, the
/// program ends as others do.
void WriteOutput(std::string_view text);

/// Writes bytes to an open file. 0, or the error that kept the rest from being written; where nobody reads any longer,
/// the program ends as others do.
int WriteTo(int stream, std::string_view bytes);

/// Writes messages to standard error. What is lost there cannot be said anywhere.
void WriteError(std::string_view text);

/// Closes standard output. Empty when all was written to it, else why not.
std::string OutputLoss();

}  // namespace Kavra::App
