/// The calls by which readers that take paths open and look at a file, of a process that may make none.
#pragma once

#include <string>

namespace Kavra::Decoder {

/// Opens a file some times over, and answers the calls that the filter hands back (`SECCOMP_RET_TRAP`) from now on: one
/// that opens it for reading by its path in /proc/self/fd gets one of these, one that asks about it there is told. All
/// others fail with EACCES. No system call is made that names a path. Returns the path; empty where the file cannot be
/// opened again: then all of them fail.
std::string AnswerFileCalls(int file);

}  // namespace Kavra::Decoder
