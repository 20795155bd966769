#include "Commands.h"
#include "Description.h"
#include "FormatNames.h"
#include "StandardStreams.h"

#include <array>
#include <format>
#include <memory>

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

Json FormatsJson() {
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
    return {{"pixelFormats", pixelFormats}, {"fileTypes", fileTypes}};
}

std::string FormatsText() {
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
    return text + std::format("  {}\n", kTheRest);
}

}  // namespace

void AddFormats(CLI::App& program, Session& session) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* command =
        program.add_subcommand("formats", "Lists the pixel formats, and the file types that need no image library");
    command->footer("Example: kavra formats --json");
    command->add_flag("--json", *json, "One JSON object");
    command->callback([json, &session] {
        session.run = [json] {
            WriteOutput(*json ? JsonText(FormatsJson()) : FormatsText());
            return static_cast<int>(kAllDone);
        };
    });
}

}  // namespace Kavra::App
