/// What the logs of a batch say together.
#pragma once

#include <string>
#include <vector>

namespace Kavra::App {

/// Prints what became of all files in the logs of a batch's parts, by the last line of each file: how many were written,
/// and how many failed for which reason; with `json` as an object. Gives the status that the batch has had as a whole.
int ReportBatch(const std::vector<std::string>& logs, bool json);

}  // namespace Kavra::App
