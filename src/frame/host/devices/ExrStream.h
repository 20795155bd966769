/// An open file, or one in memory, as the OpenEXR library wants to see it.
#pragma once

#include "common/FileHandle.h"

#include <ImfIO.h>

#include <cstdint>
#include <span>

namespace Kavra::Devices {

/// Reads from any offset, from any thread; nothing depends on a file position but the two calls that are about it.
class ExrStream final : public Imf::IStream {
public:
    /// Takes over the file. Throws `std::system_error` when its length cannot be told.
    explicit ExrStream(Common::FileHandle file);
    /// A file's bytes in memory, which outlive the stream.
    explicit ExrStream(std::span<const unsigned char> bytes);

    bool read(char bytes[], int count) override;
    std::int64_t read(void* bytes, std::uint64_t count, std::uint64_t offset) override;
    bool isStatelessRead() const override { return true; }
    std::uint64_t tellg() override { return mPosition; }
    void seekg(std::uint64_t position) override { mPosition = position; }
    std::int64_t size() override { return static_cast<std::int64_t>(mLength); }

private:
    Common::FileHandle mFile;  ///< null: the bytes are in memory
    std::span<const unsigned char> mBytes;
    std::uint64_t mLength;
    std::uint64_t mPosition = 0;
};

}  // namespace Kavra::Devices
