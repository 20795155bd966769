#include "Captions.h"
#include "Commands.h"
#include "ContactSheet.h"
#include "Display.h"
#include "FramePattern.h"
#include "ImageObject.h"
#include "Inputs.h"
#include "Picture.h"
#include "SaveImage.h"
#include "SheetCells.h"
#include "Sizes.h"
#include "Source.h"
#include "TextureView.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <algorithm>
#include <format>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string out;
    std::vector<std::string> files;
    InputOptions inputs;
    vec2<int> cell{160, 120};
    int columns = 0;
    int rows = 0;
    bool captions = false;
    SheetContent content;
    Resampling resampling{.filter = std::nullopt, .fast = true};
    int jobs = 0;
};

/// Thumbnails that are made at the same time and put on one sheet.
class Sheet {
public:
    /// Throws `std::runtime_error` when the handler makes no such picture.
    Sheet(IImageHandler& handler, const SheetLayout& layout, const Options& options)
        : mHandler(handler), mLayout(layout), mOptions(options), mImage(MakeImage(handler, NewSheet(layout))) {
        if (mImage == nullptr) throw std::runtime_error("cannot be made");
    }

    /// Shows what a cell holds, or a crossed box. Threads: any.
    void Show(std::size_t place, const SheetCell& cell, Report& report);

    bool Save(const KString& name) { return mImage->Save(name); }

private:
    LoadedImage Thumbnail(const SheetCell& cell, Report& report);
    LoadedImage CaptionOf(const SheetCell& cell, const std::string& file);
    bool Put(const LoadedImage& image, vec2<int> place);

    IImageHandler& mHandler;
    SheetLayout mLayout;
    const Options& mOptions;
    std::mutex mImages;  ///< image objects are made, used and dropped by one thread at a time
    ImageRef mImage;
};

/// A file as its cell shows it; `block` is null when it cannot be shown.
LoadedImage Sheet::Thumbnail(const SheetCell& cell, Report& report) {
    const ElementScope scope(cell.element);
    LoadedImage image = LoadUpright(mHandler, report,
                                    {.frame = cell.frame,
                                     .wish = FitInto(mLayout.Room()),
                                     .resampling = mOptions.resampling,
                                     .selection = cell.selection});
    if (image.block == nullptr || !HasPixels(report, image, "shown")) return {};
    KeepFirst(image);
    image = ToDisplay(image, SourceOf(mHandler, report.File(), cell.frame));
    PutOnSquares(image);
    return image;
}

LoadedImage Sheet::CaptionOf(const SheetCell& cell, const std::string& file) {
    return Caption(std::filesystem::path(file).filename().string(), FactsOf(mHandler, file, cell), mLayout.Room().x,
                   mLayout.CaptionHeight());
}

bool Sheet::Put(const LoadedImage& image, vec2<int> place) {
    const std::lock_guard lock(mImages);
    const ImageRef source = MakeImage(mHandler, image);
    return source != nullptr &&
           mImage->Paste(source.get(), 0, 0, image.desc.width, image.desc.height, place.x, place.y);
}

void Sheet::Show(std::size_t place, const SheetCell& cell, Report& report) {
    const std::size_t mark = report.Mark();
    LoadedImage thumbnail, caption;
    try {
        thumbnail = Thumbnail(cell, report);
        if (mOptions.captions) caption = CaptionOf(cell, report.File());
    } catch (const std::bad_alloc&) {
        report.Fail(OwnReason("there is not enough memory", kFailureOutOfMemory));
    }
    if (thumbnail.block == nullptr) {
        report.FailUnlessSaid(mark, "cannot be shown");
        thumbnail = CrossedBox(mLayout.Room(), report.Why().text);
    }
    bool isPut = Put(thumbnail, mLayout.Place(place, {thumbnail.desc.width, thumbnail.desc.height}));
    if (caption.block != nullptr) isPut = Put(caption, mLayout.CaptionPlace(place)) && isPut;
    if (!isPut) report.FailUnlessSaid(mark, "cannot be shown");
}

FileContent Content(const SheetLayout& layout) {
    return {kR8G8B8A8, layout.Width(), layout.Height()};
}

/// Why there can be no such sheet; empty when there can.
std::string Obstacle(const std::string& out, const SheetLayout& layout) {
    const std::string obstacle = SizeObstacle(layout.Width(), layout.Height(), kR8G8B8A8);
    return obstacle.empty() ? WriteObstacle(out, Content(layout)) : obstacle;
}

SheetLayout LayoutOf(std::size_t cells, const Options& options) {
    return {cells, options.cell, options.columns > 0 ? options.columns : options.rows,
            options.captions ? CaptionHeight(options.cell.x) : 0};
}

/// Cells of one file that follow one another on a sheet.
struct FileRun {
    std::size_t file;
    std::size_t first;  ///< cell of the sheet
    std::size_t count;
};

std::vector<FileRun> RunsOf(std::span<const SheetCell> cells) {
    std::vector<FileRun> runs;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (runs.empty() || runs.back().file != cells[i].file) runs.push_back({cells[i].file, i, 0});
        ++runs.back().count;
    }
    return runs;
}

/// One sheet with these cells; true when all is well.
bool MakeSheet(IImageHandler& handler, const Options& options, const std::string& out,
               std::span<const SheetCell> cells) {
    const SheetLayout layout = LayoutOf(cells.size(), options);
    std::unique_ptr<Sheet> sheet;
    const bool begun = Prepare(out, [&](Report& report) {
        if (!IsToBeMade(report, options.files, out)) return;
        const std::string obstacle = Obstacle(out, layout);
        if (!obstacle.empty()) return FailToWrite(report, out, obstacle);
        sheet = std::make_unique<Sheet>(handler, layout, options);
    });
    if (!begun || sheet == nullptr) return begun;
    const std::vector<FileRun> runs = RunsOf(cells);
    std::vector<Report> reports;
    std::ranges::transform(runs, std::back_inserter(reports),
                           [&](const FileRun& run) { return Report(options.files[run.file]); });
    const bool all = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        const FileRun& run = runs[index];
        for (std::size_t i = run.first; i < run.first + run.count; ++i)
            sheet->Show(i, cells[i], report);
    });
    const bool written = ForOneReport(out, [&](Report& report) {
        WriteFile(report, out, Content(layout), [&](const KString& name) { return sheet->Save(name); });
    });
    return all && written;
}

/// The name of a page: by the pattern in the name, or with "-1" and so on before the extension.
std::string PageName(const std::string& out, std::size_t page) {
    const int number = static_cast<int>(page) + 1;
    if (const auto pattern = FramePattern::Parse(out)) return pattern->Name(number);
    std::filesystem::path path = out;
    path.replace_filename(std::format("{}-{}{}", path.stem().string(), number, path.extension().string()));
    return path.string();
}

std::vector<SheetCell> AllCells(IImageHandler& handler, const Options& options) {
    std::vector<SheetCell> cells;
    for (std::size_t file = 0; file < options.files.size(); ++file)
        std::ranges::move(CellsOf(handler, options.files[file], file, options.content), std::back_inserter(cells));
    return cells;
}

int Run(const Session& session, Options options) {
    if (options.inputs.AreNone(options.files)) return WrongUsage("sheet", "FILE is required");
    const Host& host = session.LoadHost();
    const InputList list = options.inputs.Expand(options.files, session);
    if (!list.canStart) return EndUnstarted(list, false);
    options.files = FileNamesOf(list.inputs);
    const std::vector<SheetCell> cells = AllCells(host.Handler(), options);
    const std::size_t perPage = options.rows > 0 ? LayoutOf(cells.size(), options).CellsIn(options.rows) : cells.size();
    const bool isStream = options.out.starts_with("/proc/self/fd/");
    if (perPage < cells.size() && isStream) return WrongUsage("sheet", "one page alone goes to a stream");
    bool all = list.IsWhole();
    for (std::size_t first = 0; first < cells.size(); first += perPage) {
        const std::span page = std::span(cells).subspan(first, std::min(perPage, cells.size() - first));
        const bool isOnly = page.size() == cells.size();
        const std::string out = isOnly ? options.out : PageName(options.out, first / perPage);
        all = MakeSheet(host.Handler(), options, out, page) && all;
    }
    return all ? kAllDone : kSomeFailed;
}

void AddLayout(CLI::App& command, Options& options) {
    command
        .add_option_function<std::string>(
            "--cell",
            [&options](const std::string& text) {
                std::tie(options.cell.x, options.cell.y) = ParseSize(text, 1, "--cell");
            },
            "The size of a cell with its margin, a twentieth of its shorter side; 160x120 unless said. Pictures keep "
            "their proportions and are never enlarged")
        ->type_name("WxH");
    AddWholeNumber(command, "--columns", options.columns, 1, "Cells in a row; about as many as rows unless said");
    AddWholeNumber(command, "--rows", options.rows, 1,
                   "Rows of a sheet; what is more goes to further ones: with a number in OUT (%d or %02d, from 1) "
                   "under that name, else as OUT-1, OUT-2 and so on");
    command.add_flag("--captions", options.captions,
                     "Write below each cell, which grows for it, the file's name, size, format and frames");
}

void AddContent(CLI::App& command, SheetContent& content) {
    command.add_flag("--frames", content.frames, "A cell for every frame or page of a file");
    command.add_flag("--levels", content.levels, "A cell for every mip level of a file");
    command.add_flag("--faces", content.faces, "A cell for every face of a cube map and every slice of a volume");
}

}  // namespace

void AddSheet(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("sheet", "Puts thumbnails of files of any kind on one picture");
    command->footer(
        "Examples: kavra sheet overview.png *.jpg *.exr --cell 200x200 --columns 6 --captions\n"
        "          kavra sheet chain.png cube.dds --levels --faces --captions");
    command->add_option("OUT", options->out, "The picture to write, or - for standard output")->required();
    session.names.out.push_back(&options->out);
    AddStreamType(*command, session.names);
    command
        ->add_option("FILE", options->files,
                     "The files, row by row. One that cannot be shown gets a crossed box with the reason. "
                     "High-dynamic-range pictures are exposed for the screen; squares show through where a picture is "
                     "transparent")
        ->option_text("FILE... REQUIRED");
    options->inputs.AddTo(*command);
    AddLayout(*command, *options);
    AddContent(*command, options->content);
    options->resampling.AddForPeople(*command);
    command->add_flag_callback(
        "--no-fast", [options] { options->resampling.fast = false; },
        "Shrink from the whole picture also where the file has a smaller one, or a JPEG can be decoded in part");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
