#include "Commands.h"
#include "Description.h"
#include "FormatNames.h"
#include "LoadOptions.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Results.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <cerrno>
#include <cstdio>
#include <format>
#include <memory>
#include <optional>
#include <system_error>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string file;
    std::string out;
    bool json = false;
    LoadOptions load;
};

/// Empty on success, else why not.
std::string WriteBytes(const std::filesystem::path& path, const void* data, std::size_t size) {
    std::FILE* file = std::fopen(path.c_str(), "wbe");
    if (file == nullptr) return std::generic_category().message(errno);
    const int writeError = std::fwrite(data, 1, size, file) == size ? 0 : errno;
    const int closeError = std::fclose(file) == 0 ? 0 : errno;
    const int error = writeError != 0 ? writeError : closeError;
    return error == 0 ? std::string() : std::generic_category().message(error);
}

/// Pipes and devices are written to as they are; everything else appears only when it is whole.
std::string WriteBlock(const std::filesystem::path& path, const void* data, std::size_t size) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    if (std::filesystem::is_fifo(status) || std::filesystem::is_character_file(status)) {
        return WriteBytes(path, data, size);
    }
    OutputFile output(path);
    const std::string reason = WriteBytes(output.TemporaryPath(), data, size);
    return reason.empty() ? output.Commit() : reason;
}

Json BlockJson(const Report& report, const LoadedImage& image) {
    const ImageDescription& desc = image.desc;
    return {{"file", report.File()},
            {"width", desc.width},
            {"height", desc.height},
            {"depth", desc.depth},
            {"format", static_cast<int>(desc.format)},
            {"formatName", Enumerator(desc.format)},
            {"rowPitch", desc.rowPitch},
            {"dataSize", desc.dataSize},
            {"blockSize", image.BlockSize()},
            {"textureType", static_cast<int>(desc.textureType)},
            {"hasTransparentPixels", desc.hasTransparentPixels},
            {"hasTranslucentPixels", desc.hasTranslucentPixels},
            {"hasAlpha", desc.hasAlpha},
            {"defaultOrientation", desc.defaultOrientation},
            {"orientation", static_cast<int>(desc.orientation)},
            {"gamma", desc.gamma},
            {"warnings", report.Texts()}};
}

std::string AlphaText(const ImageDescription& desc) {
    if (!desc.hasAlpha) return "no alpha";
    if (desc.hasTranslucentPixels) return desc.hasTransparentPixels ? "blended and cut-out alpha" : "blended alpha";
    return desc.hasTransparentPixels ? "cut-out alpha" : "opaque alpha";
}

std::string BlockText(const Report& report, const LoadedImage& image, const std::string& out) {
    const ImageDescription& desc = image.desc;
    const std::string depth = desc.depth > 1 ? std::format(" x {}", desc.depth) : std::string();
    return std::format("{}: {} x {}{}, {}, {}, {} bytes a row, {}, {}, gamma {:.4g}\n{}: {} bytes\n",
                       PrintableName(report.File()), desc.width, desc.height, depth, Enumerator(desc.format),
                       TextureTypeName(desc.textureType), desc.rowPitch, AlphaText(desc),
                       OrientationName(desc.orientation), desc.gamma, PrintableName(out), image.BlockSize());
}

/// Loads and writes; what was done, when it was done.
std::optional<LoadedImage> Dump(const Host& host, Report& report, const Options& options) {
    if (!IsToBeMade(report, options.out)) return std::nullopt;
    LoadedImage image = Load(host.Handler(), report, options.load);
    if (image.block == nullptr) {
        FailToRead(report, 0);
        return std::nullopt;
    }
    const std::string reason = WriteBlock(options.out, image.block->mData, image.BlockSize());
    if (reason.empty()) {
        report.work.written.push_back(options.out);
        return image;
    }
    report.Fail("cannot be written: " + reason, options.out);
    return std::nullopt;
}

int Run(const Session& session, Options options) {
    const bool isPrinted = IsStandardOutput(options.out);
    if (isPrinted && options.json)
        return WrongUsage("dump", "--json and the block exclude one another on standard output");
    if (isPrinted) options.out = "/dev/stdout";
    const Host& host = session.LoadHost();
    Report report(options.file);
    std::optional<LoadedImage> image;
    Attempt(report, [&] { image = Dump(host, report, options); });
    const bool isLeftOut = !image && !report.Failed();
    if (options.json) {
        report.out = JsonText(image ? BlockJson(report, *image) : isLeftOut ? WorkJson(report) : FailureJson(report));
    } else if (image && !isPrinted) {
        report.out = BlockText(report, *image, options.out);
    }
    report.Print();
    return image || isLeftOut ? kAllDone : kSomeFailed;
}

}  // namespace

void AddDump(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("dump", "Loads a file and writes the pixel block byte for byte");
    command->footer("Example: kavra dump photo.jpg --out photo.rgba --format rgba8 --size 512x512");
    command->add_option("FILE", options->file, "The file")->required();
    session.names.in.push_back(&options->file);
    command
        ->add_option("--out", options->out, "Where the block goes, - for standard output: of a cube map all six faces")
        ->required();
    command->add_flag("--json", options->json, "Describe the block as a JSON object");
    options->load.AddTo(*command, true);
    options->load.selection.AddOptions(*command, Purpose::kHosts);
    options->load.resampling.AddForHosts(*command, Resampling::kLoadsUnlessSaid);
    options->load.resampling.AddFast(*command);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
