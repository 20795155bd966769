#include "ColourOptions.h"
#include "Commands.h"
#include "FileColours.h"
#include "FileNames.h"
#include "FormatNames.h"
#include "ImageObject.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "SaveImage.h"
#include "Sizes.h"
#include "Turns.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <kavra/devices/AFormatConvertor.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <format>
#include <iterator>
#include <memory>

namespace Kavra::App {
namespace {

using namespace Devices;

/// A file, and where its top left corner comes to lie.
struct Piece {
    std::string file;
    int x = 0;
    int y = 0;
};

struct Options {
    std::string out;
    std::vector<Piece> pieces;
    vec2<int> size;
    EFormat format = kR8G8B8A8;
    LoadOptions load;  // of each piece
    ColourOptions colours;
    int jobs = 0;
};

/// The name is all before the last "@": it may have some of its own.
Piece ParsePiece(const std::string& text) {
    const std::size_t at = text.rfind('@');
    const auto position = at == std::string::npos ? std::nullopt : ParsePosition(std::string_view(text).substr(at + 1));
    if (!position || at == 0) {
        throw CLI::ValidationError("FILES", text + " is no file with its place; write as in photo.jpg@10,20");
    }
    return {text.substr(0, at), position->first, position->second};
}

/// What of a length `size` put at `position` is inside 0..`whole`.
struct Overlap {
    Overlap(int position, int size, int whole)
        : begin(std::max(position, 0)),
          source(begin - std::int64_t{position}),
          size(std::min(std::int64_t{position} + size, std::int64_t{whole}) - begin) {}

    int begin;            // in the whole
    std::int64_t source;  // in the piece
    std::int64_t size;    // below 1 when they do not meet
};

/// The piece in the format of the whole, with what its values are in a file like that; a failure is said in the report.
LoadedImage LoadPiece(IImageHandler& handler, Report& report, const Options& options, EFormat format) {
    Source source = SourceOf(handler, report.File(), options.load.frame);
    LoadedImage image =
        LoadFlat(handler, report, options.colours.ForLoading(handler, options.load, report.File(), source));
    if (image.block == nullptr || !HasPixels(report, image, "pasted")) return {};
    image = options.colours.Apply(report, std::move(image), source, LowerExtension(options.out), format);
    if (image.block == nullptr || image.desc.format == format) return image;
    return *ToFormat(image, format);
}

/// Pastes what of the piece is inside. The source rectangle starts at 0, 0: a paste moves by the difference of the two
/// corners.
bool Paste(IImageHandler& handler, Report& report, IImage& whole, const LoadedImage& image, const Piece& piece) {
    const Overlap across(piece.x, image.desc.width, whole.Width());
    const Overlap down(piece.y, image.desc.height, whole.Height());
    if (across.size < 1 || down.size < 1) {
        report.Fail(std::format("lies outside the picture: {} x {} pixels at {},{}", image.desc.width,
                                image.desc.height, piece.x, piece.y));
        return false;
    }
    const vec2<int> size{static_cast<int>(across.size), static_cast<int>(down.size)};
    ImageRef source = MakeImage(handler, image);
    const bool isCut = size.x < image.desc.width || size.y < image.desc.height;
    if (source != nullptr && isCut) {
        const LoadedImage part =
            Fetch(*source, {static_cast<int>(across.source), static_cast<int>(down.source)}, size, size, kTopLeft);
        source = part.block != nullptr ? MakeImage(handler, part) : nullptr;
    }
    if (source == nullptr || !whole.Paste(source.get(), 0, 0, size.x, size.y, across.begin, down.begin)) return false;
    if (isCut)
        report.Say("note", std::format("only the {} x {} pixels inside the picture were pasted", size.x, size.y));
    return true;
}

std::vector<std::string> FilesOf(const std::vector<Piece>& pieces) {
    std::vector<std::string> files;
    std::ranges::transform(pieces, std::back_inserter(files), &Piece::file);
    return files;
}

/// Loads the pieces at the same time and pastes them in order, later ones over earlier ones. Whether all are there;
/// `pasted` counts.
bool PasteAll(IImageHandler& handler, IImage& whole, const Options& options, std::size_t& pasted) {
    const std::vector<Piece>& pieces = options.pieces;
    std::vector<Report> reports = MakeReports(FilesOf(pieces));
    Turns turns;
    return ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        LoadedImage image;
        std::exception_ptr failure;
        try {
            image = LoadPiece(handler, report, options, whole.Format());
        } catch (...) {
            failure = std::current_exception();
        }
        const Turns::Turn turn(turns, index);
        if (failure) std::rethrow_exception(failure);
        if (image.block == nullptr) return;
        const std::size_t mark = report.Mark();
        const MessageScope scope(report);
        if (Paste(handler, report, whole, image, pieces[index])) {
            ++pasted;
        } else {
            report.FailUnlessSaid(mark, "cannot be pasted");
        }
    });
}

FileContent Content(const Options& options) {
    return {options.format, options.size.x, options.size.y};
}

/// Why there can be no such picture; empty when nothing speaks against it.
std::string Obstacle(const Options& options) {
    if (Utilities::AFormatConvertor::BytesPerPixel(options.format) == 0) {
        return Enumerator(options.format) + " has no pixels";
    }
    const std::string obstacle = SizeObstacle(options.size.x, options.size.y, options.format);
    return obstacle.empty() ? WriteObstacle(options.out, Content(options)) : obstacle;
}

/// The empty picture; null, and a failure in the report, when there is none.
ImageRef MakeWhole(IImageHandler& handler, Report& report, const Options& options) {
    const std::string obstacle = Obstacle(options);
    if (!obstacle.empty()) {
        FailToWrite(report, options.out, obstacle);
        return nullptr;
    }
    const std::size_t mark = report.Mark();
    const MessageScope scope(report);
    ImageRef whole = MakeBlankImage(handler, options.size.x, options.size.y, options.format);
    if (whole == nullptr) report.FailUnlessSaid(mark, "cannot be written");
    return whole;
}

/// The format of the whole: files that hold light alone have no integers.
EFormat WholeFormat(const Options& options) {
    const std::string extension = LowerExtension(options.out);
    if (options.colours.raw || IsFloating(options.format)) return options.format;
    return FormatIn(ColoursOf(extension), extension, options.format);
}

int Run(const Session& session, Options options) {
    options.format = WholeFormat(options);
    for (Piece& piece : options.pieces)
        piece.file = ReadStream(piece.file);
    const Host& host = session.LoadHost();
    ImageRef whole;
    const auto make = [&](Report& report) {
        if (IsToBeMade(report, FilesOf(options.pieces), options.out))
            whole = MakeWhole(host.Handler(), report, options);
    };
    if (!Prepare(options.out, make)) return kSomeFailed;
    if (whole == nullptr) return kAllDone;
    std::size_t pasted = 0;
    const bool all = PasteAll(host.Handler(), *whole, options, pasted);
    if (pasted == 0) return kSomeFailed;
    const bool written = ForOneReport(options.out, [&](Report& report) {
        WriteFile(report, options.out, Content(options), [&](const KString& name) { return whole->Save(name); });
    });
    return all && written ? kAllDone : kSomeFailed;
}

}  // namespace

void AddCompose(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("compose", "Pastes pictures onto one");
    command->footer(
        "Examples: kavra compose both.png --size 960x320 left.jpg@0,0 right.jpg@480,0\n"
        "          kavra compose both.png --size 960x320 --fill 480x320 left.jpg@0,0 right.jpg@480,0");
    command->add_option("OUT", options->out, "The file to write, or - for standard output")->required();
    session.names.out.push_back(&options->out);
    AddStreamType(*command, session.names);
    command
        ->add_option_function<std::vector<std::string>>(
            "FILES",
            [options](const std::vector<std::string>& texts) {
                std::ranges::transform(texts, std::back_inserter(options->pieces), ParsePiece);
            },
            "Pictures and where their top left corners go, in pixels. Later ones replace what earlier ones put "
            "there, transparent pixels too; what lies outside is left out")
        ->type_name("FILE@X,Y")
        ->required();
    command
        ->add_option_function<std::string>(
            "--size",
            [options](const std::string& text) { std::tie(options->size.x, options->size.y) = ParseSize(text, 1); },
            "The size of the result; where nothing is pasted it is transparent black")
        ->type_name("WxH")
        ->required();
    options->load.wish.AddTo(*command, "each picture", true);
    options->load.resampling.AddForPeople(*command);
    options->load.resampling.AddFast(*command);
    options->load.selection.AddOptions(*command, Purpose::kPeople);
    AddFormatOption(*command, options->format, "The pixel format written; rgba8 unless said, in OpenEXR rgba16f");
    options->colours.AddTo(*command);
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
