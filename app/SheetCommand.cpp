#include "Commands.h"
#include "ContactSheet.h"
#include "Display.h"
#include "FileNames.h"
#include "ImageObject.h"
#include "Picture.h"
#include "SaveImage.h"
#include "Sizes.h"
#include "Usage.h"
#include "Workers.h"

#include <kavra/objects/OS.h>

#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string out;
    std::vector<std::string> files;
    vec2<int> cell{160, 120};
    int columns = 0;
    int jobs = 0;
};

/// The size to load a file with, in its own rows and columns, to have it fit into `room` when it is displayed; 0, 0
/// where that is not known before. Volumes load in their own size only.
vec2<int> LoadingSize(IImageHandler& handler, Report& report, vec2<int> room) {
    const MessageScope scope(report);
    const Owned<ImageDesc> desc(handler.GetImageDesc(OS::FromUtf8(report.File().c_str()).c_str()));
    if (desc == nullptr || desc->textureType == kTextureVolume || desc->width < 1 || desc->height < 1) return {};
    const bool isTurned = desc->orientation >= kLeftTop && LowerExtension(report.File()) != ".exr";
    return FitInto({desc->width, desc->height}, isTurned ? vec2<int>{room.y, room.x} : room);
}

/// Thumbnails that are made at the same time and put on one sheet.
class Sheet {
public:
    /// Throws `std::runtime_error` when the handler makes no such picture.
    Sheet(IImageHandler& handler, const SheetLayout& layout)
        : mHandler(handler), mLayout(layout), mImage(MakeImage(handler, NewSheet(layout))) {
        if (mImage == nullptr) throw std::runtime_error("cannot be made");
    }

    /// Shows a file, or a crossed box. Threads: any.
    void Show(std::size_t cell, Report& report);

    bool Save(const KString& name) { return mImage->Save(name); }

private:
    LoadedImage Thumbnail(Report& report);
    LoadedImage Shrink(Report& report, LoadedImage image);
    bool Put(std::size_t cell, const LoadedImage& thumbnail);

    IImageHandler& mHandler;
    SheetLayout mLayout;
    std::mutex mImages;  ///< image objects are made, used and dropped by one thread at a time
    ImageRef mImage;
};

/// A flat picture shrunk to fit; `block` is null when that failed.
LoadedImage Sheet::Shrink(Report& report, LoadedImage image) {
    const vec2<int> own{image.desc.width, image.desc.height};
    const vec2<int> size = FitInto(own, mLayout.Room());
    if (size.x == own.x && size.y == own.y) return image;
    const MessageScope scope(report);
    const std::lock_guard lock(mImages);
    const ImageRef source = MakeImage(mHandler, image);
    return source != nullptr ? Fetch(*source, {0, 0}, own, size, kTopLeft) : LoadedImage();
}

/// A file as its cell shows it; `block` is null when it cannot be shown.
LoadedImage Sheet::Thumbnail(Report& report) {
    const vec2<int> wanted = LoadingSize(mHandler, report, mLayout.Room());
    LoadedImage image = LoadUpright(mHandler, report, 0, wanted.x, wanted.y, true);
    if (image.block == nullptr || !HasPixels(report, image, "shown")) return {};
    KeepFirst(image);
    image = Shrink(report, std::move(image));
    if (image.block == nullptr) return image;
    image = ToDisplay(image, LowerExtension(report.File()) == ".exr");
    PutOnSquares(image);
    return image;
}

bool Sheet::Put(std::size_t cell, const LoadedImage& thumbnail) {
    const vec2<int> size{thumbnail.desc.width, thumbnail.desc.height};
    const vec2<int> place = mLayout.Place(cell, size);
    const std::lock_guard lock(mImages);
    const ImageRef source = MakeImage(mHandler, thumbnail);
    return source != nullptr && mImage->Paste(source.get(), 0, 0, size.x, size.y, place.x, place.y);
}

void Sheet::Show(std::size_t cell, Report& report) {
    const std::size_t mark = report.Mark();
    LoadedImage thumbnail;
    try {
        thumbnail = Thumbnail(report);
    } catch (const std::bad_alloc&) {
        report.Fail("there is not enough memory");
    }
    if (thumbnail.block == nullptr) {
        report.FailUnlessSaid(mark, "cannot be shown");
        thumbnail = CrossedBox(mLayout.Room());
    }
    if (!Put(cell, thumbnail)) report.FailUnlessSaid(mark, "cannot be shown");
}

FileContent Content(const SheetLayout& layout) {
    return {kR8G8B8A8, layout.Width(), layout.Height()};
}

/// Why there can be no such sheet; empty when there can.
std::string Obstacle(const Options& options, const SheetLayout& layout) {
    const std::string obstacle = SizeObstacle(layout.Width(), layout.Height(), kR8G8B8A8);
    return obstacle.empty() ? WriteObstacle(options.out, Content(layout)) : obstacle;
}

int Run(const Session& session, const Options& options) {
    const SheetLayout layout(options.files.size(), options.cell, options.columns);
    const Host host = session.LoadHost();
    std::unique_ptr<Sheet> sheet;
    const bool begun = ForOneReport(options.out, [&](Report& report) {
        const std::string obstacle = Obstacle(options, layout);
        if (!obstacle.empty()) return FailToWrite(report, options.out, obstacle);
        sheet = std::make_unique<Sheet>(host.Handler(), layout);
    });
    if (!begun) return kSomeFailed;
    std::vector<Report> reports = MakeReports(options.files);
    const bool all =
        ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) { sheet->Show(index, report); });
    const bool written = ForOneReport(options.out, [&](Report& report) {
        WriteFile(report, options.out, Content(layout), [&](const KString& name) { return sheet->Save(name); });
    });
    return all && written ? kAllDone : kSomeFailed;
}

}  // namespace

void AddSheet(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("sheet", "Puts thumbnails of files of any kind on one picture");
    command->footer("Example: kavra sheet overview.png *.jpg *.exr --cell 200x200 --columns 6");
    command->add_option("OUT", options->out, "The picture to write")->required();
    command
        ->add_option("FILE", options->files,
                     "The files, row by row. One that cannot be shown gets a crossed box. High-dynamic-range pictures "
                     "are exposed for the screen; squares show through where a picture is transparent")
        ->required();
    command
        ->add_option_function<std::string>(
            "--cell",
            [options](const std::string& text) {
                std::tie(options->cell.x, options->cell.y) = ParseSize(text, 1, "--cell");
            },
            "The size of a cell with its margin, a twentieth of its shorter side; 160x120 unless said. Pictures keep "
            "their proportions and are never enlarged")
        ->type_name("WxH");
    AddWholeNumber(*command, "--columns", options->columns, 1, "Cells in a row; about as many as rows unless said");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
