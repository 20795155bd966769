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

#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string out;
    std::vector<std::string> files;
    vec2<int> cell{160, 120};
    int columns = 0;
    Resampling resampling{.filter = std::nullopt, .fast = true};
    int jobs = 0;
};

/// Thumbnails that are made at the same time and put on one sheet.
class Sheet {
public:
    /// Throws `std::runtime_error` when the handler makes no such picture.
    Sheet(IImageHandler& handler, const SheetLayout& layout, const Resampling& resampling)
        : mHandler(handler), mLayout(layout), mResampling(resampling), mImage(MakeImage(handler, NewSheet(layout))) {
        if (mImage == nullptr) throw std::runtime_error("cannot be made");
    }

    /// Shows a file, or a crossed box. Threads: any.
    void Show(std::size_t cell, Report& report);

    bool Save(const KString& name) { return mImage->Save(name); }

private:
    LoadedImage Thumbnail(Report& report);
    bool Put(std::size_t cell, const LoadedImage& thumbnail);

    IImageHandler& mHandler;
    SheetLayout mLayout;
    Resampling mResampling;
    std::mutex mImages;  ///< image objects are made, used and dropped by one thread at a time
    ImageRef mImage;
};

/// A file as its cell shows it; `block` is null when it cannot be shown.
LoadedImage Sheet::Thumbnail(Report& report) {
    LoadedImage image = LoadUpright(mHandler, report, {.wish = FitInto(mLayout.Room()), .resampling = mResampling});
    if (image.block == nullptr || !HasPixels(report, image, "shown")) return {};
    KeepFirst(image);
    image = ToDisplay(image, IsOpenExr(report.File()));
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
        sheet = std::make_unique<Sheet>(host.Handler(), layout, options.resampling);
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
    options->resampling.AddForPeople(*command);
    command->add_flag_callback(
        "--no-fast", [options] { options->resampling.fast = false; },
        "Shrink from the whole picture also where the file has a smaller one, or a JPEG can be decoded in part");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
