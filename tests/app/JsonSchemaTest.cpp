// What the commands print with --json, against the page that says what that is: docs/json.md and docs/json.schema.json.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <format>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

Json ReadSchema() {
    return Json::parse(TextOf(std::filesystem::path(KAVRA_SOURCE_DIR) / "docs/json.schema.json"));
}

/// Checks values by the words of JSON Schema (2020-12) that the page uses; another word is an error of the page.
class Checker {
public:
    explicit Checker(Json schema) : mSchema(std::move(schema)) {}

    /// What is wrong with a value by the definition of a name; empty when nothing is.
    std::string Check(const std::string& name, const Json& value) const {
        return Wrong(mSchema.at("$defs").at(name), value, name);
    }

private:
    static bool Is(const Json& value, const std::string& type) {
        if (type == "null") return value.is_null();
        if (type == "string") return value.is_string();
        if (type == "boolean") return value.is_boolean();
        if (type == "integer") return value.is_number_integer();
        if (type == "number") return value.is_number();
        if (type == "array") return value.is_array();
        if (type == "object") return value.is_object();
        throw std::runtime_error("no type: " + type);
    }

    static bool HasType(const Json& types, const Json& value) {
        if (types.is_string()) return Is(value, types);
        return std::ranges::any_of(types, [&](const Json& type) { return Is(value, type); });
    }

    std::string Wrong(const Json& rule, const Json& value, const std::string& place) const {
        for (const auto& [word, wanted] : rule.items()) {
            std::string wrong = WrongBy(word, wanted, rule, value, place);
            if (!wrong.empty()) return wrong;
        }
        return {};
    }

    std::string WrongBy(const std::string& word, const Json& wanted, const Json& rule, const Json& value,
                        const std::string& place) const {
        const auto unless = [&](bool good) {
            return good ? std::string() : place + " breaks " + word + ": " + value.dump();
        };
        if (word == "description") return {};
        if (word == "type") return unless(HasType(wanted, value));
        if (word == "const") return unless(value == wanted);
        if (word == "enum") return unless(std::ranges::contains(wanted, value));
        if (word == "minItems") return unless(!value.is_array() || value.size() >= wanted.get<std::size_t>());
        if (word == "maxItems") return unless(!value.is_array() || value.size() <= wanted.get<std::size_t>());
        if (word == "pattern")
            return unless(!value.is_string() ||
                          std::regex_search(value.get<std::string>(), std::regex(wanted.get<std::string>())));
        if (word == "$ref") {
            const std::string start = "#/$defs/", name = wanted;
            return Wrong(mSchema.at("$defs").at(name.substr(start.size())), value, place);
        }
        if (word == "anyOf") {
            std::string all;
            for (const Json& one : wanted) {
                const std::string wrong = Wrong(one, value, place);
                if (wrong.empty()) return {};
                all += wrong + "\n";
            }
            return all;
        }
        if (word == "items") return WrongItem(wanted, value, place);
        if (word == "required") {
            for (const std::string name : wanted)
                if (value.is_object() && !value.contains(name)) return std::format("{} lacks {}", place, name);
            return {};
        }
        if (word == "properties" || word == "additionalProperties") return WrongProperty(word, rule, value, place);
        throw std::runtime_error("the checker does not know the word " + word);
    }

    std::string WrongItem(const Json& wanted, const Json& value, const std::string& place) const {
        if (!value.is_array()) return {};
        for (std::size_t i = 0; i < value.size(); ++i) {
            std::string wrong = Wrong(wanted, value[i], std::format("{}[{}]", place, i));
            if (!wrong.empty()) return wrong;
        }
        return {};
    }

    std::string WrongProperty(const std::string& word, const Json& rule, const Json& value,
                              const std::string& place) const {
        if (!value.is_object()) return {};
        for (const auto& [key, item] : value.items()) {
            const bool isListed = rule.contains("properties") && rule["properties"].contains(key);
            if (isListed != (word == "properties")) continue;
            const Json& wanted = isListed ? rule["properties"][key] : rule["additionalProperties"];
            if (wanted.is_boolean()) return std::format("{} has the unknown key {}", place, key);
            std::string wrong = Wrong(wanted, item, std::format("{}.{}", place, key));
            if (!wrong.empty()) return wrong;
        }
        return {};
    }

    Json mSchema;
};

/// A command line without --json, and the definition of what it prints.
struct Case {
    std::string definition;
    Words line;
    int status = 0;
};

std::vector<Case> Cases(const TemporaryFolder& folder) {
    const std::string grey = Sample("grey.png"), photo = Sample("photo.jpg"), cube = Sample("cube.dds");
    const std::string bad = folder.Write("bad.tif", "no picture"), out = folder / "out.png", dds = folder / "out.dds";
    const std::string odd = folder.Write("caf\xE9.png", ReadAll(grey)), map = Sample("studio.hdr");
    return {
        {"info", {"info", grey, photo, odd, bad, folder / "none\xE9.png"}, 1},
        {"info", {"info", "--all", photo, Sample("rgba.exr"), cube, Sample("volume.dds"), Sample("spinner.gif")}},
        {"dump", {"dump", odd, "--out", folder / "block"}},
        {"dump", {"dump", grey, "--out", folder / "block", "--dry-run"}},
        {"dump", {"dump", bad, "--out", folder / "block"}, 1},
        {"convert", {"convert", grey, odd, bad, folder / "folder", "--to", "tif"}, 1},
        {"convert", {"convert", odd, folder / "\xFF.jpg"}},
        {"convert", {"convert", grey, folder / "folder/grey.tif", "--no-clobber"}},
        {"convert", {"convert", grey, photo, folder / "all.tif", "--frames", "all", "--dry-run"}},
        {"frames", {"frames", Sample("spinner.gif"), folder / "%d.png"}},
        {"frames", {"frames", bad, folder / "%d.png"}, 1},
        {"resize", {"resize", grey, out, "--scale", "50%"}},
        {"crop", {"crop", grey, out, "--rect", "0,0,9999,9"}, 1},
        {"target", {"target", grey, out}},
        {"tile", {"tile", grey, out, "--repeat", "2x2"}},
        {"compose", {"compose", out, "--size", "9x9", grey + "@0,0", bad + "@0,0"}, 1},
        {"compose", {"compose", folder / "out.nothing", "--size", "9x9", grey + "@0,0"}, 1},
        {"sheet", {"sheet", out, grey, bad}, 1},
        {"sheet", {"sheet", out, grey, "--dry-run"}},
        {"texture", {"texture", grey, odd, bad, folder / "folder", "--quality", "fast"}, 1},
        {"texture", {"texture", grey, dds, "--dry-run"}},
        {"texture", {"texture", cube, dds}},
        {"texture", {"texture", grey, grey, folder / "v.dds", "--volume", "--quality", "fast"}},
        {"textureInspect", {"texture", "--inspect", cube, Sample("volume.dds"), bad}, 1},
        {"compare", {"compare", grey, odd}},
        {"compare", {"compare", grey, photo}, 1},
        {"light", {"light", map, bad}, 1},
        {"check", {"check", grey, odd, cube, bad}, 1},
        {"formats", {"formats"}},
    };
}

}  // namespace

TEST(JsonSchema, WhatEveryCommandPrintsIsWhatThePageSays) {
    const Checker checker(ReadSchema());
    const TemporaryFolder folder;
    for (const Case& row : Cases(folder)) {
        const ProgramResult result = RunKavra(Joined({row.line, {"--json"}}));
        EXPECT_EQ(result.status, row.status) << testing::PrintToString(row.line) << result.error;
        EXPECT_EQ(checker.Check(row.definition, Json::parse(result.out)), "") << testing::PrintToString(row.line);
    }
}

TEST(JsonSchema, TheLogOfABatchIsLinesOfWhatThePageSays) {
    const Checker checker(ReadSchema());
    const TemporaryFolder folder;
    const std::string odd = folder.Write("caf\xE9.png", ReadAll(Sample("grey.png")));
    const std::string bad = folder.Write("bad.tif", "no picture");
    const std::string list = folder.Write("list", odd + "\n" + bad + "\n" + Sample("photo.jpg").string());
    RunKavra({"batch", "--from", list, "--do", "convert", "--out", folder / "{stem}.bmp", "--log", folder / "log",
              "--only", "png,jpeg"});
    RunKavra({"batch", "--from", list, "--do", "convert", "--out", folder / "{stem}.tga", "--log", folder / "log"});
    std::istringstream lines(TextOf(folder / "log"));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_EQ(checker.Check("batchLog", Json::parse(line)), "") << line;
    EXPECT_EQ(count, 6);
}

TEST(JsonSchema, AManifestIsLinesOfWhatThePageSaysAndTheReportIsWhatItSays) {
    const Checker checker(ReadSchema());
    const TemporaryFolder folder;
    const Json line = {{"inputBytes", Sample("grey.png").string()}, {"output", folder / "a.bmp"}, {"do", "convert"}};
    EXPECT_EQ(checker.Check("batchManifest", line), "");
    const std::string manifest = folder.Write("work.jsonl", line.dump() + "\nnonsense\n"), log = folder / "log";
    EXPECT_EQ(RunKavra({"batch", "--manifest", manifest, "--log", log}).status, 1);
    std::istringstream lines(TextOf(log));
    int count = 0;
    for (std::string text; std::getline(lines, text); ++count)
        EXPECT_EQ(checker.Check("batchLog", Json::parse(text)), "") << text;
    EXPECT_EQ(count, 2);
    const ProgramResult report = RunKavra({"batch", "--report", log, "--json"});
    EXPECT_EQ(report.status, 1) << report.error;
    EXPECT_EQ(checker.Check("batchReport", Json::parse(report.out)), "") << report.out;
}

TEST(JsonSchema, EveryCommandThatPrintsJsonHasItsDefinition) {
    const Json definitions = ReadSchema().at("$defs");
    const TemporaryFolder folder;
    for (const std::string command : {"info", "dump", "convert", "frames", "resize", "crop", "compose", "sheet",
                                      "compare", "target", "texture", "tile", "light", "check", "formats"}) {
        EXPECT_TRUE(ExpectDone({"help", command}).contains("--json")) << command;
        EXPECT_TRUE(definitions.contains(command)) << command;
    }
}

TEST(JsonSchema, TheCheckerSeesWhatIsWrong) {
    const Checker checker(ReadSchema());
    Json good = Json::array();
    good.push_back(
        {{"file", "a"}, {"outputs", Json::array({"b"})}, {"status", "written"}, {"warnings", Json::array()}});
    EXPECT_EQ(checker.Check("convert", good), "");
    const auto isWrong = [&](auto change) {
        Json bad = good;
        change(bad[0]);
        return !checker.Check("convert", bad).empty();
    };
    EXPECT_TRUE(isWrong([](Json& file) { file.erase("status"); }));
    EXPECT_TRUE(isWrong([](Json& file) { file["status"] = "done"; }));
    EXPECT_TRUE(isWrong([](Json& file) { file["outputs"] = "b"; }));
    EXPECT_TRUE(isWrong([](Json& file) { file["outputs"][0] = 1; }));
    EXPECT_TRUE(isWrong([](Json& file) { file["more"] = 1; }));
    EXPECT_TRUE(isWrong([](Json& file) { file["fileBytes"] = "caf\xC3\xA9"; }));
    EXPECT_TRUE(isWrong([](Json& file) { file = "a"; }));
}

TEST(JsonSchema, ThePageNamesEveryKey) {
    const std::string page = TextOf(std::filesystem::path(KAVRA_SOURCE_DIR) / "docs/json.md");
    const auto visit = [&](const auto& self, const Json& rule) -> void {
        if (rule.is_array() || rule.is_object())
            for (const Json& item : rule)
                self(self, item);
        if (!rule.is_object() || !rule.contains("properties") || !rule["properties"].is_object()) return;
        for (const auto& [key, ignored] : rule["properties"].items())
            EXPECT_TRUE(page.contains("`" + key + "`")) << key;
    };
    visit(visit, ReadSchema());
}

TEST(JsonSchema, NamesThatAreNoTextCanBeHadBackFromTheirBytes) {
    const TemporaryFolder folder;
    const std::string name = "50% caf\xE9 \xFF.png";
    folder.Write(name, ReadAll(Sample("grey.png")));
    const Json told = Described(folder / name);
    std::string bytes = told["fileBytes"], back;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const bool isEscape = bytes[i] == '%';
        back += isEscape ? static_cast<char>(std::stoi(bytes.substr(i + 1, 2), nullptr, 16)) : bytes[i];
        if (isEscape) i += 2;
    }
    EXPECT_EQ(back, (folder / name).string());
    EXPECT_FALSE(Described(Sample("grey.png")).contains("fileBytes"));
}

TEST(JsonSchema, WithJsonStandardOutputIsOneDocumentAlsoInADryRun) {
    const TemporaryFolder folder;
    const Json told = Json::parse(ExpectDone({"convert", Sample("grey.png"), folder / "a.jpg", "--json", "--dry-run"}));
    EXPECT_EQ(told[0]["status"], "planned");
    EXPECT_EQ(told[0]["outputs"], Json::array({(folder / "a.jpg").string()}));
    EXPECT_TRUE(
        Json::parse(ExpectDone({"light", Sample("studio.hdr"), "--plot", folder / "a.png", "--json", "--dry-run"}))
            .is_array());
}
