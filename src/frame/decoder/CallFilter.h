/// The system calls of a process that decodes.
#pragma once

namespace Kavra::Decoder {

/// Whether the system filters calls by a program (seccomp), and this file knows the calls of the machine.
bool CanFilterCalls();

/// Leaves the calling process, which has one thread, and all threads that it starts the calls that decoding in memory
/// needs. Those that take the path of a file are answered by this process itself (`AnswerFileCalls`); all others fail with
/// EACCES: libraries that look for a file go on without it. False where that fails.
bool FilterCalls();

}  // namespace Kavra::Decoder
