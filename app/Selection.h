/// Which of the pictures of a file is loaded.
#pragma once

#include "Messages.h"

#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/LoadPreferences.h>

#include <CLI/App.hpp>

#include <string>

namespace Kavra::Devices {
struct FilePart;
}

namespace Kavra::App {

/// What a picture is loaded for.
enum class Purpose {
    kHosts,   ///< what a host gets, whatever that is
    kPeople,  ///< the picture of the frame that was asked for
    /// The same of every file that has one: a depth comes as grey, and layers without colours beside them as the first of
    /// them, with a note.
    kFiles
};

/// As it stands, what a host gets that says nothing: all faces and slices, the largest level, the file's own channels.
struct Selection {
    int face = -1;
    int slice = -1;
    int mipLevel = 0;
    std::string channels;

    /// What was said, until a file is known.
    std::string part;        ///< by number or name; instead of a frame
    std::string layer;       ///< whose channels are taken
    int level = -1;          ///< of a DDS instead of a frame, of others the mip level; negative: not said
    bool everyFace = false;  ///< each by itself, where a command writes several files
    bool everySlice = false;

    Purpose purpose = Purpose::kHosts;
    bool isResolved = false;  ///< nothing is left of what was said

    /// Adds `--face --slice --part --layer --channels --level`.
    void AddOptions(CLI::App& command, Purpose wanted);

    /// Brings what was said to numbers of this file; `frame` follows a part, and a level of a DDS. False, and the report
    /// says what there is, where something is not in the file.
    bool Resolve(Devices::IImageHandler& handler, Report& report, int& frame);

    /// Makes them a part of what is preferred of loads; `preferences` points into this.
    void AddTo(Devices::LoadPreferences& preferences) const;

    /// Whether anything was said.
    bool IsGiven() const;

private:
    void TakeWhatThereIs(Report& report, const Devices::FilePart& part);
};

/// "+x", "-x" ...
std::string FaceName(int face);

/// Says in one note that of several frames, pages or parts only the first is taken.
void NoteTheOthers(Devices::IImageHandler& handler, Report& report);

}  // namespace Kavra::App
