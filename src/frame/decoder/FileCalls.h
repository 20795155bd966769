/// The calls by which readers that take paths open and look at a file, of a process that may make none.
#pragma once

#include <string>
#include <string_view>

namespace Kavra::Decoder {

/// Opens a file some times over, and answers the calls that the filter hands back (`SECCOMP_RET_TRAP`) from now on: one
/// that opens the path that is returned gets one of these, one that asks about it is told of it. All others fail with
/// EACCES. No system call is made that names a path. The path has no file of its own and ends as `name` (UTF-8): some
/// readers go by that. It is empty where the file cannot be opened again: then all calls fail.
std::string AnswerFileCalls(int file, std::string_view name);

}  // namespace Kavra::Decoder
