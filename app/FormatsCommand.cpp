#include "Commands.h"
#include "Description.h"
#include "FormatNames.h"
#include "StandardStreams.h"

#include <kavra/devices/IImageInspector.h>

#include <array>
#include <exception>
#include <format>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace Kavra::App {
namespace {

/// A file type that the module or the host reads or writes by itself.
struct FileType {
    std::string_view name;
    std::string_view extensions;
    bool reads;
    bool writes;
};

constexpr std::array kFileTypes = {
    FileType{"DirectDraw Surface", ".dds", true, true},
    FileType{"Khronos Texture 2", ".ktx2", true, true},
    FileType{"OpenEXR", ".exr", true, false},
    FileType{"CALS raster", ".cal", true, false},
    FileType{"FLIC animation", ".fli .flc", true, false},
    FileType{"PCX", ".pcx", true, false},
    FileType{"PICT", ".pct .pict", true, false},
    FileType{"RLC raster", ".rlc", true, false},
    FileType{"Band raster", ".bil", true, false},  // with its header in a .hdr file beside it
};

constexpr std::string_view kTheRest = "and whatever the image library has";

std::string BytesText(const Devices::FormatFacts& facts) {
    if (facts.bytesPerBlock > 0) return std::format("{} a block of 4 x 4", facts.bytesPerBlock);
    return std::to_string(facts.bytesPerPixel);
}

/// The extensions of the files that are read and written with the image library that is installed; both empty where the
/// module is not there, or an older one.
struct Extensions {
    std::vector<std::string> readable, writable;
};

std::vector<std::string> WordsOf(const char* text) {
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
}

Extensions AskExtensions(const Session& session) try {
    const Host& host = session.LoadHost();
    auto* const inspector = dynamic_cast<Devices::IImageInspector*>(&host.Handler());
    if (inspector == nullptr) return {};
    return {WordsOf(inspector->ReadableExtensions()), WordsOf(inspector->WritableExtensions())};
} catch (const std::exception&) {
    return {};
}

/// The words in lines of no more than 100 characters.
std::string Wrapped(const std::vector<std::string>& words) {
    constexpr std::size_t kMaxLine = 100;
    std::string text, line = " ";
    for (const std::string& word : words) {
        if (line.size() + 1 + word.size() > kMaxLine) {
            text += line + "\n";
            line = " ";
        }
        line += " " + word;
    }
    return text + line + "\n";
}

Json FormatsJson(const Extensions& extensions) {
    Json pixelFormats = Json::array();
    for (const Devices::EFormat format : AllFormats()) {
        if (format == Devices::kUnknown) continue;
        const Devices::FormatFacts facts = Facts(format);
        pixelFormats.push_back({{"number", static_cast<int>(format)},
                                {"name", facts.name},
                                {"shortName", facts.shortName},
                                {"channels", facts.channels},
                                {"bytes", facts.bytesPerPixel},
                                {"blockBytes", facts.bytesPerBlock}});
    }
    Json fileTypes = Json::array();
    for (const FileType& type : kFileTypes) {
        fileTypes.push_back(
            {{"name", type.name}, {"extensions", type.extensions}, {"reads", type.reads}, {"writes", type.writes}});
    }
    return {{"pixelFormats", pixelFormats},
            {"fileTypes", fileTypes},
            {"readable", extensions.readable},
            {"writable", extensions.writable}};
}

std::string FormatsText(const Extensions& extensions) {
    std::string text = "Pixel formats\n";
    text += std::format("  {:>6}  {:<16} {:<8} {:>8}  {}\n", "number", "name", "short", "channels", "bytes");
    for (const Devices::EFormat format : AllFormats()) {
        if (format == Devices::kUnknown) continue;
        const Devices::FormatFacts facts = Facts(format);
        text += std::format("  {:>6}  {:<16} {:<8} {:>8}  {}\n", static_cast<int>(format), facts.name, facts.shortName,
                            facts.channels, BytesText(facts));
    }
    text += "\nFile types of the module and the host\n";
    for (const FileType& type : kFileTypes) {
        text +=
            std::format("  {:<20} {:<12} {}\n", type.name, type.extensions, type.writes ? "reads and writes" : "reads");
    }
    text += std::format("  {}\n", kTheRest);
    if (!extensions.readable.empty()) text += "\nFiles that are read\n" + Wrapped(extensions.readable);
    if (!extensions.writable.empty()) text += "\nFiles that are written\n" + Wrapped(extensions.writable);
    return text;
}

}  // namespace

void AddFormats(CLI::App& program, Session& session) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* command =
        program.add_subcommand("formats", "Lists the pixel formats, and the file types that can be read and written");
    command->footer("Example: kavra formats --json");
    command->add_flag("--json", *json, "One JSON object");
    command->callback([json, &session] {
        session.run = [json, &session] {
            const Extensions extensions = AskExtensions(session);
            WriteOutput(*json ? JsonText(FormatsJson(extensions)) : FormatsText(extensions));
            return static_cast<int>(kAllDone);
        };
    });
}

}  // namespace Kavra::App
