#include "ColourOptions.h"
#include "Commands.h"
#include "Comparison.h"
#include "Description.h"
#include "Display.h"
#include "FileColours.h"
#include "FileNames.h"
#include "FormatNames.h"
#include "Picture.h"
#include "Printable.h"
#include "Usage.h"
#include "Workers.h"
#include "WriteOptions.h"
#include "WritePolicy.h"

#include <array>
#include <charconv>
#include <cmath>
#include <format>
#include <memory>
#include <optional>
#include <span>
#include <utility>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string a;
    std::string b;
    std::string out;
    double gain = 1;
    double tolerance = 0;  // of values that go to 1
    bool display = false;
    bool json = false;
    int frame = 0;
};

struct Picture {
    LoadedImage image;
    Source source;
};

/// What came out, and in which unit it is told.
struct Findings {
    Comparison comparison;
    int scale = 1;  // what a value of 1 is called: 255 where both pictures hold integers
    bool isWithin = false;
};

/// As a screen shows it: of colours that are transparent nothing is seen.
LoadedImage Shown(const Picture& picture) {
    LoadedImage image = ToDisplay(picture.image, picture.source, ToneMap::kNone);
    using Bytes = std::array<unsigned char, 4>;
    for (Bytes& pixel : std::span(static_cast<Bytes*>(image.block->mData), image.BlockSize() / sizeof(Bytes))) {
        if (pixel[3] == 0) pixel = {};
    }
    return image;
}

/// The picture in its own format, or as a screen shows it; `block` is null when the report says why not.
Picture LoadPicture(IImageHandler& handler, Report& report, const Options& options) {
    Picture picture;
    picture.source = SourceOf(handler, report.File(), options.frame);
    const LoadOptions load =
        ColourOptions().ForLoading(handler, {.frame = options.frame}, report.File(), picture.source);
    picture.image = LoadUpright(handler, report, load);
    LoadedImage& image = picture.image;
    if (image.block == nullptr) return picture;
    if (!HasPixels(report, image, "compared")) return {};
    if (options.display) image = Shown(picture);
    return picture;
}

/// Why two pictures cannot be laid over each other; empty when they can.
std::string Obstacle(const ImageDescription& a, const ImageDescription& b) {
    const auto says = [](const ImageDescription& desc) {
        const std::string layers = LayerCount(desc) > 1 ? std::format(" x {}", LayerCount(desc)) : std::string();
        return std::format("{} x {}{}", desc.width, desc.height, layers);
    };
    return says(a) == says(b) ? std::string() : std::format("one has {} pixels and the other {}", says(a), says(b));
}

void NoteConventions(Report& report, const Picture& a, const Picture& b) {
    const auto isLight = [](const Picture& picture) {
        return TransferOf(picture.source, picture.image.desc.format).IsLinear();
    };
    if (isLight(a) != isLight(b)) {
        report.Say("note",
                   "one holds light and the other values for display; their numbers were compared as they are "
                   "(--display compares what a screen shows)");
    }
}

Findings Compared(const Picture& a, const Picture& b, const Options& options) {
    Findings findings{.comparison = Compare(a.image, b.image)};
    const bool areFloats = IsFloating(a.image.desc.format) || IsFloating(b.image.desc.format);
    findings.scale = areFloats ? 1 : 255;
    constexpr double kRounding = 1.00001;  // steps of integers are no round numbers in binary
    const double largest = findings.comparison.Together().Largest();
    findings.isWithin = findings.comparison.notFinite == 0 && largest <= options.tolerance * kRounding;
    return findings;
}

Json DifferenceJson(const Difference& difference, int scale) {
    return {
        {"largest", difference.Largest() * scale}, {"mean", difference.Mean() * scale}, {"psnr", difference.Psnr()}};
}

Json FindingsJson(const Options& options, const Findings& findings) {
    const Comparison& comparison = findings.comparison;
    Json channels = Json::array();
    for (std::size_t i = 0; i < comparison.names.size(); ++i) {
        Json channel = {{"name", comparison.names[i]}};
        channel.update(DifferenceJson(comparison.channels[i], findings.scale));
        channels.push_back(channel);
    }
    return {{"file", options.a},
            {"other", options.b},
            {"scale", findings.scale},
            {"pixels", comparison.pixels},
            {"differing", comparison.differing},
            {"notFinite", comparison.notFinite},
            {"channels", channels},
            {"together", DifferenceJson(comparison.Together(), findings.scale)},
            {"withinTolerance", findings.isWithin}};
}

std::string Line(std::string_view name, const Difference& difference, int scale) {
    const double psnr = difference.Psnr();
    const std::string noise = std::isinf(psnr) ? "infinite" : std::format("{:.2f} dB", psnr);
    return std::format("  {:<9} largest {:.4g}, mean {:.4g}, PSNR {}\n", name, difference.Largest() * scale,
                       difference.Mean() * scale, noise);
}

std::string FindingsText(const Options& options, const Findings& findings) {
    const Comparison& comparison = findings.comparison;
    std::string text = std::format("{} and {}: ", PrintableName(options.a), PrintableName(options.b));
    if (comparison.differing == 0) return text + std::format("all {} pixels are the same\n", comparison.pixels);
    text += std::format("{} of {} pixels differ (values go to {})\n", comparison.differing, comparison.pixels,
                        findings.scale);
    for (std::size_t i = 0; i < comparison.names.size(); ++i)
        text += Line(comparison.names[i], comparison.channels[i], findings.scale);
    text += Line("together", comparison.Together(), findings.scale);
    if (comparison.notFinite > 0) {
        text += std::format("  {} pixels hold NaN or infinity where the other does not, and are not counted in these\n",
                            comparison.notFinite);
    }
    return text;
}

void WriteDifference(IImageHandler& handler, Report& report, const Picture& a, const Picture& b, const Options& options,
                     int scale) {
    if (!IsToBeMade(report, std::array{options.a, options.b}, options.out)) return;
    const std::string extension = LowerExtension(options.out);
    const EFormat wanted = scale == 1 ? kR32G32B32A32F : kR8G8B8A8;
    const EFormat format = FormatIn(ColoursOf(extension), extension, wanted);
    LoadedImage picture = DifferencePicture(a.image, b.image, static_cast<float>(options.gain), format);
    Source source;
    source.alpha = kAlphaNone;
    WriteOptions().Write(handler, report, std::move(picture), source, options.out);
}

int Run(const Session& session, const Options& options) {
    const Host& host = session.LoadHost();
    IImageHandler& handler = host.Handler();
    Report first(options.a), second(options.b);
    Picture a, b;
    Attempt(first, [&] { a = LoadPicture(handler, first, options); });
    Attempt(second, [&] { b = LoadPicture(handler, second, options); });
    std::optional<Findings> findings;
    Attempt(second, [&] {
        if (a.image.block == nullptr || b.image.block == nullptr) return;
        const std::string obstacle = Obstacle(a.image.desc, b.image.desc);
        if (!obstacle.empty()) return second.Fail(std::format("cannot be compared with {}: {}", options.a, obstacle));
        if (!options.display) NoteConventions(second, a, b);
        findings = Compared(a, b, options);
        if (!options.out.empty()) WriteDifference(handler, second, a, b, options, findings->scale);
    });
    if (options.json) {
        second.out =
            JsonText(findings ? FindingsJson(options, *findings) : FailureJson(first.Failed() ? first : second));
    } else if (findings) {
        second.out += FindingsText(options, *findings);
    }
    first.Print();
    second.Print();
    const bool isGood = findings && findings->isWithin && !first.Failed() && !second.Failed();
    return isGood ? kAllDone : kSomeFailed;
}

/// A number of 0 or more, with what stands behind it; nothing for anything else.
std::optional<std::pair<double, std::string_view>> ParseNumber(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !(number >= 0) || !std::isfinite(number)) return std::nullopt;
    return std::pair(number, text.substr(static_cast<std::size_t>(end - text.data())));
}

/// As a difference of values that go to 1.
double ParseTolerance(const std::string& text) {
    const auto number = ParseNumber(text);
    if (number && number->second.empty()) return number->first / 255;
    if (number && number->second == "%") return number->first / 100;
    throw CLI::ValidationError("--tolerance", text + " is no number of steps, such as 2, and no share, such as 0.5%");
}

double ParseGain(const std::string& text) {
    const auto number = ParseNumber(text);
    if (number && number->second.empty()) return number->first;
    throw CLI::ValidationError("--gain", text + " is no number, 0 or more");
}

}  // namespace

void AddCompare(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("compare", "Tells how far two pictures are apart");
    command->footer(
        "The exit status is 0 only when no value differs by more than the tolerance.\n"
        "Example: kavra compare before.png after.png --tolerance 1 --out difference.png --gain 10");
    session.names.in.insert(session.names.in.end(), {&options->a, &options->b});
    command->add_option("A", options->a, "A picture, taken as it is displayed")->required();
    command
        ->add_option("B", options->b,
                     "Another one of the same size. Numbers are compared, whatever the pixel formats; differences are "
                     "told in steps of 8 bits where both hold integers, else as values")
        ->required();
    command->add_option("--out", options->out,
                        "Writes the differences as a picture, those of alpha added to each colour");
    command
        ->add_option_function<std::string>(
            "--gain", [options](const std::string& text) { options->gain = ParseGain(text); },
            "What the differences in that picture are multiplied by; 1 unless said")
        ->type_name("N")
        ->needs("--out");
    command
        ->add_option_function<std::string>(
            "--tolerance", [options](const std::string& text) { options->tolerance = ParseTolerance(text); },
            "The largest difference that passes, in steps of 8 bits (1/255) or, as in 0.5%, of white; 0 unless said. "
            "NaN "
            "and infinity pass where both have them")
        ->type_name("N");
    command->add_flag("--display", options->display,
                      "Compare 8 bits of what a screen shows: light with the curve of sRGB, colours apart from alpha, "
                      "and none where alpha is 0");
    command->add_flag("--json", options->json, "One JSON object; a PSNR without end is null");
    AddFrame(*command, options->frame);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
