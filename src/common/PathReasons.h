/// What is wrong with a path, as the system has it.
#pragma once

#include "common/Reasons.h"

namespace Kavra::Common {

/// Says why the file at a path cannot be read: there is none, it is something else, it may not be read, it is empty.
/// Says nothing where none of these is so. Never throws.
void SayOfPathToRead(const wchar_t* path) noexcept;

/// The same of a path where a file is to be made or replaced; `error`, an `errno` value, is what the system said, 0 where
/// it was not asked. Something is said in any case.
void SayOfPathToWrite(const wchar_t* path, int error) noexcept;

/// Says why a folder could not be made; something is said in any case.
void SayOfFolderToMake(const wchar_t* folder) noexcept;

/// What a failed write to an open file says: `error` is an `errno` value, 0 where none is known.
void SayOfWriting(int error) noexcept;

}  // namespace Kavra::Common
