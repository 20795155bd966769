/// Texture files as files that the handler reads.
#pragma once

#include <string>

namespace Kavra::App {

/// Chooses, as long as it lives and on its thread, which element of an array is seen in texture files; 0 otherwise.
class ElementScope {
public:
    explicit ElementScope(int element);
    ~ElementScope();
    ElementScope(const ElementScope&) = delete;
    ElementScope& operator=(const ElementScope&) = delete;

private:
    int mOuter;
};

/// Whether the handler is given something else in place of this file: KTX2 files, and elements of arrays beyond the first.
bool IsSeenAsView(const std::string& file);

/// The file that the handler reads in place of `file`: itself, or a DDS file of the element with all its levels, faces and
/// slices, block by block. It has no name of its own, and is there until this thread asks for another one. Itself, too,
/// where no such file can be made; the handler then says that it is none of its own.
std::string PathForHandler(const std::string& file);

/// How many elements a texture file has; 1 of all other files.
int ElementCount(const std::string& file);

}  // namespace Kavra::App
