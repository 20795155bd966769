#include "TextureView.h"

#include "FileNames.h"
#include "PixelTexture.h"

#include <kavra/objects/OS.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <format>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace Kavra::App {

using namespace Devices;

namespace {

thread_local int theElement = 0;

bool IsKtx(const std::string& file) {
    return LowerExtension(file) == ".ktx2";
}

/// A folder that is gone again at its end, with the file in it.
class HiddenFolder {
public:
    HiddenFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kavra-XXXXXX").string();
        if (mkdtemp(name.data()) != nullptr) mPath = name;
    }
    ~HiddenFolder() {
        std::error_code ignored;
        if (!mPath.empty()) std::filesystem::remove_all(mPath, ignored);
    }
    HiddenFolder(const HiddenFolder&) = delete;
    HiddenFolder& operator=(const HiddenFolder&) = delete;

    const std::filesystem::path& Path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

/// An open file without a name.
class View {
public:
    View(std::string name, std::filesystem::file_time_type time, int element, int handle)
        : mName(std::move(name)), mTime(time), mElement(element), mHandle(handle) {}
    ~View() { close(mHandle); }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    bool IsOf(const std::string& name, std::filesystem::file_time_type time, int element) const {
        return mName == name && mTime == time && mElement == element;
    }
    std::string Path() const { return std::format("/proc/self/fd/{}", mHandle); }

private:
    std::string mName;
    std::filesystem::file_time_type mTime;
    int mElement;
    int mHandle;
};

/// What of a shape DDS files cannot say is left out: nothing of its pixels.
TextureShape SayableShape(TextureShape shape) {
    if (!CanWriteTexture(shape, kTextureFileDDS)) shape.isSrgb = false;
    return shape;
}

/// A handle of a DDS file of one element; negative where there can be none.
int OpenElement(TextureFileReader& reader, int element) {
    const TextureShape all = reader.Shape();
    if (element >= all.elements) return -1;
    TextureShape shape = SayableShape(all);
    shape.elements = 1;
    std::vector<unsigned char> bytes(TextureBytes(shape));
    for (int face = 0; face < FaceCount(shape.type); ++face) {
        for (int level = 0; level < shape.levels; ++level) {
            unsigned char* const at = bytes.data() + TextureLevelOffset(shape, 0, face, level);
            if (!reader.ReadLevel(element, face, level, at)) return -1;
        }
    }
    const HiddenFolder folder;
    const std::filesystem::path path = folder.Path() / "view.dds";
    const bool isWritten = WriteTextureFile(OS::FromUtf8(path.c_str()).c_str(), shape, bytes.data(), bytes.size());
    return isWritten ? open(path.c_str(), O_RDONLY | O_CLOEXEC) : -1;
}

}  // namespace

ElementScope::ElementScope(int element) : mOuter(std::exchange(theElement, element)) {}

ElementScope::~ElementScope() {
    theElement = mOuter;
}

bool IsSeenAsView(const std::string& file) {
    return IsKtx(file) || (theElement > 0 && IsTextureName(file));
}

std::string PathForHandler(const std::string& file) {
    if (!IsSeenAsView(file)) return file;
    thread_local std::optional<View> last;
    std::error_code failed;
    const auto time = std::filesystem::last_write_time(file, failed);
    if (failed) return file;
    if (last && last->IsOf(file, time, theElement)) return last->Path();
    TextureFileReader reader;
    if (!reader.Open(OS::FromUtf8(file.c_str()).c_str())) return file;
    const int handle = OpenElement(reader, theElement);
    if (handle < 0) return file;
    last.emplace(file, time, theElement, handle);
    return last->Path();
}

int ElementCount(const std::string& file) {
    TextureFileReader reader;
    const bool isTexture = IsTextureName(file) && reader.Open(OS::FromUtf8(file.c_str()).c_str());
    return isTexture ? reader.Shape().elements : 1;
}

}  // namespace Kavra::App
