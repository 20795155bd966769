// What the module shows to the dynamic linker.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace {

/// The names that the module defines for others, demangled.
std::set<std::string> ExportedNames() {
    struct PipeCloser {
        void operator()(std::FILE* pipe) const { pclose(pipe); }
    };
    const std::unique_ptr<std::FILE, PipeCloser> pipe(
        popen("nm --dynamic --defined-only --demangle --format=just-symbols '" KAVRA_MODULE "'", "r"));
    std::set<std::string> names;
    std::array<char, 4096> line{};
    while (pipe && std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
        std::string name(line.data());
        name.erase(name.find_last_not_of('\n') + 1);
        names.insert(name);
    }
    return names;
}

bool IsMeantForHosts(std::string_view name) {
    if (name == "KavraInitialize" || name == "KavraShutdown") return true;
    for (const std::string_view prefix : {"typeinfo for ", "typeinfo name for ", "vtable for "}) {
        if (!name.starts_with(prefix)) continue;
        name.remove_prefix(prefix.size());
        return name == "Kavra::Devices::OIIOImageHandler" || name == "Kavra::Devices::OIIOImage";
    }
    // A derived class has the base's entries of the second view in its own table.
    constexpr std::string_view kThunk = "non-virtual thunk to ";
    if (name.starts_with(kThunk)) name.remove_prefix(kThunk.size());
    return name.starts_with("Kavra::Devices::OIIOImageHandler::") || name.starts_with("Kavra::Devices::OIIOImage::");
}

TEST(Exports, AreTheTwoEntriesAndTheMembersOfTheExportedClassesOnly) {
    for (const std::string& name : ExportedNames())
        EXPECT_TRUE(IsMeantForHosts(name)) << name;
}

TEST(Exports, HaveTheEntriesUnderTheirPlainNames) {
    const auto names = ExportedNames();
    EXPECT_TRUE(names.contains("KavraInitialize"));
    EXPECT_TRUE(names.contains("KavraShutdown"));
}

TEST(Exports, HaveTheHandlersMembers) {
    const auto names = ExportedNames();
    EXPECT_TRUE(names.contains("vtable for Kavra::Devices::OIIOImageHandler"));
    EXPECT_TRUE(names.contains("typeinfo for Kavra::Devices::OIIOImageHandler"));
    EXPECT_TRUE(names.contains("Kavra::Devices::OIIOImageHandler::OIIOImageHandler()"));
    EXPECT_TRUE(names.contains("Kavra::Devices::OIIOImageHandler::mNetObjectCount"));
    EXPECT_TRUE(names.contains("non-virtual thunk to Kavra::Devices::OIIOImageHandler::Clone()"));
    EXPECT_TRUE(names.contains("non-virtual thunk to Kavra::Devices::OIIOImageHandler::~OIIOImageHandler()"));
    for (const std::string_view member :
         {"GetImageDesc", "LoadTexture", "CanConvertTo", "FormatToImageSpec", "ToOIIOOrientation"}) {
        const std::string start = "Kavra::Devices::OIIOImageHandler::" + std::string(member) + "(";
        EXPECT_TRUE(std::ranges::any_of(names, [&](const std::string& name) { return name.starts_with(start); }))
            << member;
    }
}

}  // namespace
