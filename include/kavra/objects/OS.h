/// \file
/// Files and paths by wide name, with the conventions of the C library's bounds-checked functions.
#pragma once

#include <kavra/objects/Export.h>

#include <cstddef>
#include <cstdio>
#include <string>

/// The operating system, as far as readers and writers of files need it.
namespace Kavra::OS {

/// Opens a regular file by path; wide names become UTF-8. `mode` is as for `fopen` ("rb", "wb", ...). Returns 0 and a
/// handle that the caller closes with `std::fclose`, or an `errno` value and a null handle. Anything that is not a
/// regular file - a folder, a pipe, a device - is refused without blocking on it. Handles are not inherited by child
/// processes. All functions here may be called from any thread.
///
///     std::FILE* file = nullptr;
///     if (OS::wfopen(&file, path, L"rb") != 0) return false;
KAVRA_OBJECTS_API int wfopen(std::FILE** file, const wchar_t* path, const wchar_t* mode);
/// The same by a narrow path, whose bytes go to the system as they are.
KAVRA_OBJECTS_API int fopen(std::FILE** file, const char* path, const char* mode);

/// Whether the path names an existing regular file, links followed. False for null.
KAVRA_OBJECTS_API bool IsRegularFile(const wchar_t* path);

/// The parts of a path: drive (always empty here), directory with its trailing separator, name without extension,
/// extension with its dot (from the last "." after the last separator). Any output may be null; each other one
/// must hold as many characters as `path` and its NUL. "/maps/sky.tar.exr" gives "", "/maps/", "sky.tar" and ".exr".
KAVRA_OBJECTS_API void _wsplitpath(const wchar_t* path, wchar_t* drive, wchar_t* dir, wchar_t* name, wchar_t* ext);

/// The directory of a path with its trailing separator, "" when the path has none. `size` counts characters, the
/// NUL included. Returns 0, or -1 with `out` empty when the path is empty or null or the directory does not fit.
KAVRA_OBJECTS_API int wsplitpath(const wchar_t* path, wchar_t* out, std::size_t size);

/// Formats wide text into `size` characters, always NUL-terminated. Returns the number of characters written, or
/// -1 with an empty text when it does not fit or the format is wrong. "%s" takes wide text, "%hs" narrow text.
KAVRA_OBJECTS_API int swprintf_s(wchar_t* buffer, std::size_t size, const wchar_t* format, ...);

/// Copies at most `count` characters, always NUL-terminated. Returns 0; when the text does not fit in `size`, `dest` is
/// emptied and ERANGE returned; null arguments or size 0 give EINVAL.
KAVRA_OBJECTS_API int strncpy_s(char* dest, std::size_t size, const char* src, std::size_t count);

/// Between wide text (code points; UTF-16 surrogate pairs are understood too) and UTF-8. File names need not be text:
/// `FromUtf8` turns each byte that is part of no well-formed UTF-8 into the surrogate U+DC00 plus its value, and
/// `ToUtf8` turns that back, so every name survives the way there and back. What else is no text becomes U+FFFD.
/// Null is the empty text. Throws `std::bad_alloc`.
KAVRA_OBJECTS_API std::string ToUtf8(const wchar_t* text);
/// The other way round.
KAVRA_OBJECTS_API std::wstring FromUtf8(const char* text);

}  // namespace Kavra::OS
