/// Writing pictures to files.
#pragma once

#include "FileTypes.h"
#include "LoadOptions.h"
#include "Messages.h"

#include <kavra/devices/SavePreferences.h>

#include <filesystem>
#include <functional>

namespace Kavra::App {

/// Why no such picture can be written to `path`, as far as that shows before it is tried: its name is taken or chooses
/// no file type, its folder will not have it, or the file type does not hold it. Empty when nothing speaks against it.
std::string WriteObstacle(const std::filesystem::path& path, const FileContent& content);

/// Whether files of this name can be made at all, as far as that shows before there is a picture: of what `WriteObstacle`
/// tells all but what a file type holds. A failure is said of `path`.
bool CanBeMade(Report& report, const std::filesystem::path& path);

/// Says of `path` that it cannot be written, and why.
void FailToWrite(Report& report, const std::filesystem::path& path, const std::string& reason);

/// Has `write` make a file under the name it is given; the file appears under its own name only when it is whole.
/// Messages and a failure, with the reason where one is known, are said of the output. True when the file is there.
bool WriteFile(Report& report, const std::filesystem::path& path, const FileContent& content,
               const std::function<bool(const Objects::KString&)>& write);

/// Writes an image through the handler. Of a cube map or volume a flat file gets the first face or slice, and the
/// report a note. `preferences` hold for the writing, and say whether a fourth channel stays out of the file.
bool Save(Devices::IImageHandler& handler, Report& report, const LoadedImage& image, const std::filesystem::path& path,
          const Devices::SavePreferences& preferences = {});

}  // namespace Kavra::App
