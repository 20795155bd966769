#include "Commands.h"
#include "Description.h"
#include "EnvironmentFile.h"
#include "FileNames.h"
#include "LightFindings.h"
#include "LightPlot.h"
#include "SaveImage.h"
#include "StandardStreams.h"
#include "Workers.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::vector<std::string> files;
    std::string plot;
    bool json = false;
    int jobs = 0;
    LightOptions light;
};

/// The shortest decimal number that is this float, as JSON writes it.
double Shortest(float value) {
    char text[32];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    double shortest = value;
    std::from_chars(text, end, shortest);
    return shortest;
}

Json Numbers(std::initializer_list<float> values) {
    Json numbers = Json::array();
    for (const float value : values)
        numbers.push_back(Shortest(value));
    return numbers;
}

Json Vector(const vec3<float>& v) {
    return Numbers({v.x, v.y, v.z});
}

Json LightJson(const std::string& file, const LightFindings& findings) {
    const vec4<float>& mean = findings.averageColor;
    Json lights = Json::array();
    for (const LightFinding& light : findings.lights)
        lights.push_back({{"direction", Vector(light.direction)}, {"color", Vector(light.colour)}});
    return {{"file", file},
            {"averageColor", Numbers({mean.x, mean.y, mean.z, mean.w})},
            {"intensity",
             {{"brightestChannel", Shortest(findings.intensity.x)},
              {"meanBrightest", Shortest(findings.intensity.y)},
              {"luminance", Shortest(findings.intensity.z)}}},
            {"weightedAverage", Vector(findings.weightedAverage)},
            {"lights", lights}};
}

bool Plot(IImageHandler& handler, Report& report, const LightFindings& findings, const std::filesystem::path& path) {
    const SmallEnvironment map = LoadSmallEnvironment(handler, report.File(), kPlotWidth, kPlotMapHeight);
    if (map.image.block == nullptr) {
        report.Fail("cannot be read");
        return false;
    }
    const std::string title = std::filesystem::path(report.File()).filename().string();
    return Save(handler, report, DrawLightPlot(title, map, findings), path);
}

/// What was found and, where that is wanted, drawn; nothing when something failed.
std::optional<LightFindings> Measure(IImageHandler& handler, Report& report, const Options& options,
                                     const std::filesystem::path& plot) {
    LoadedImage map = LoadEnvironment(handler, report);
    if (map.block == nullptr) return std::nullopt;
    LightFindings findings = MeasureLight(handler, map, options.light);
    map.block.reset();  // not needed for the plot, which loads a small one
    if (!plot.empty() && !Plot(handler, report, findings, plot)) return std::nullopt;
    return findings;
}

/// Where each file's plot goes; empty names when none is wanted.
std::vector<std::filesystem::path> PlotNames(const Options& options) {
    std::vector<std::filesystem::path> names(options.files.size());
    if (options.plot.empty()) return names;
    const bool toFolder = IsFolder(options.plot, names.size());
    for (std::size_t i = 0; i < names.size(); ++i)
        names[i] = toFolder ? InFolder(options.plot, options.files[i], "png") : std::filesystem::path(options.plot);
    return names;
}

std::size_t LongestName(const std::vector<std::string>& files) {
    return std::ranges::max_element(files, {}, &std::string::size)->size();
}

int Run(const Session& session, const Options& options) {
    const std::vector<std::filesystem::path> plots = PlotNames(options);
    const std::string clash = options.plot.empty() ? std::string() : Clash(options.files, plots);
    if (!clash.empty()) return WrongUsage(clash);
    const Host host = session.LoadHost();
    std::vector<Report> reports = MakeReports(options.files);
    std::vector<Json> json(reports.size());
    const std::size_t width = LongestName(options.files);
    const bool isTable = reports.size() > 1;
    if (isTable && !options.json) WriteOutput(LightTableHead(width));
    const bool good = ForEachReport(reports, options.jobs, [&](std::size_t index, Report& report) {
        const auto findings = Measure(host.Handler(), report, options, plots[index]);
        if (options.json) {
            json[index] = findings ? LightJson(report.File(), *findings) : FailureJson(report);
        } else if (findings) {
            report.out =
                isTable ? LightTableLine(report.File(), width, *findings) : LightText(report.File(), *findings);
        }
    });
    if (options.json) WriteOutput(JsonText(Json(json)));
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddLight(CLI::App& program, Session& session) {
    constexpr int kSamples = 20000;  // the search takes no more, so there are no more lights
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("light", "Measures environment maps and finds their lights");
    command->footer(
        "Directions: +y is up, -z ahead (the middle of the map), +x right.\n"
        "Examples: kavra light studio.hdr --plot lights.png\n"
        "          kavra light *.exr --plot plots/ --lights 3");
    command->add_option("FILE", options->files, "The maps, equirectangular; of several a table")->required();
    command->add_option("--lights", options->light.lights, "The most lights to look for; 8 unless said")
        ->check(CLI::Range(0, kSamples));
    command->add_flag("--upper", options->light.upperHemisphere,
                      "Intensity and weighted average of the upper hemisphere, by the cosine from the zenith");
    command->add_flag("--json", options->json, "One JSON array with an object a file");
    command->add_option("--plot", options->plot,
                        "Draws the lights, numbered, on the map: into this file, or into this folder as PNG files");
    command->add_option("--jobs", options->jobs, "Files worked on at a time; all cores unless said")
        ->check(CLI::PositiveNumber);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
