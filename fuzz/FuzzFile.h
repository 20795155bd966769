/// One fuzz input as a file that can be opened by name.
#pragma once

#include <kavra/objects/KString.h>
#include <kavra/objects/OS.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace Kavra::Fuzz {

/// A folder of this process alone, in memory where the system has such a place; removed when the process exits.
class FuzzFolder {
public:
    FuzzFolder() {
        for (const std::filesystem::path& base : {std::filesystem::path("/dev/shm"), TemporaryBase()}) {
            std::string pattern = (base / "kavra-fuzz-XXXXXX").string();
            if (mkdtemp(pattern.data()) == nullptr) continue;
            mPath = pattern;
            return;
        }
        std::abort();
    }
    ~FuzzFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    const std::filesystem::path& Path() const { return mPath; }

    static const FuzzFolder& OfThisProcess() {
        static const FuzzFolder folder;
        return folder;
    }

private:
    static std::filesystem::path TemporaryBase() {
        std::error_code ignored;
        return std::filesystem::temp_directory_path(ignored);
    }

    std::filesystem::path mPath;
};

/// The bytes as the file "input" + `extension` (with its dot) for as long as this object lives. Files with different
/// extensions may live side by side, which makes a picture and its side file.
class FuzzFile {
public:
    FuzzFile(std::span<const unsigned char> bytes, std::string_view extension)
        : mPath(FuzzFolder::OfThisProcess().Path() / ("input" + std::string(extension))) {
        std::ofstream stream(mPath, std::ios::binary | std::ios::trunc);
        stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        stream.flush();
        // A half-written input would make every finding unrepeatable.
        if (!stream) std::abort();
    }
    ~FuzzFile() {
        std::error_code ignored;
        std::filesystem::remove(mPath, ignored);
    }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    const std::filesystem::path& Path() const { return mPath; }
    Objects::KString Name() const { return Objects::KString(OS::FromUtf8(mPath.c_str()).c_str()); }

private:
    std::filesystem::path mPath;
};

}  // namespace Kavra::Fuzz
