/// Inspections of files, for tests that look at what they tell.
#pragma once

#include "load/FileInspection.h"
#include "load/TextureFiles.h"
#include "support/MessageRecorder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

struct DeleteInspection {
    void operator()(Devices::IFileInspection* file) const { file->Delete(); }
};
using Inspected = std::unique_ptr<Devices::IFileInspection, DeleteInspection>;

class FileInspection : public testing::Test {
protected:
    ~FileInspection() override { EXPECT_TRUE(messages.Texts().empty()) << "an inspection raises no message"; }

    static Inspected Inspect(const std::filesystem::path& path) { return Inspected(Devices::InspectFile(Wide(path))); }

    /// The text of a name; null where there is none.
    static const char* TextOf(const Devices::FilePart& part, std::string_view name) {
        for (std::size_t i = 0; i < part.textCount; ++i) {
            if (part.texts[i].name == name) return part.texts[i].value;
        }
        return nullptr;
    }

    TemporaryFolder folder;
    MessageRecorder messages;
};

}  // namespace Kavra::Tests
