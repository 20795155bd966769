/// Numbers and texts in packets, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Kavra::Common {

/// Puts fields behind each other.
class FieldWriter {
public:
    template <class T>
    void Add(const T& value) {
        static_assert(std::is_trivially_copyable_v<T>);
        const std::size_t end = mBytes.size();
        mBytes.resize(end + sizeof(T));
        std::memcpy(mBytes.data() + end, &value, sizeof(T));
    }
    /// Its length and its bytes.
    void AddText(std::string_view text) {
        Add(static_cast<std::uint32_t>(text.size()));
        mBytes.insert(mBytes.end(), text.begin(), text.end());
    }
    const std::vector<unsigned char>& Bytes() const { return mBytes; }

private:
    std::vector<unsigned char> mBytes;
};

/// Takes fields off again. What is not there is zero or empty, and the reader knows that it was not.
class FieldReader {
public:
    explicit FieldReader(std::span<const unsigned char> bytes) : mRest(bytes) {}

    /// Only numbers, of which every bit pattern is one; and what our own side has written.
    template <class T>
    T Take() {
        static_assert(std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>);
        T value{};
        if (mRest.size() < sizeof(T)) {
            mIsWhole = false;
            mRest = {};
            return value;
        }
        std::memcpy(&value, mRest.data(), sizeof(T));
        mRest = mRest.subspan(sizeof(T));
        return value;
    }
    std::string TakeText() {
        const auto length = Take<std::uint32_t>();
        if (mRest.size() < length) {
            mIsWhole = false;
            mRest = {};
            return {};
        }
        std::string text(reinterpret_cast<const char*>(mRest.data()), length);
        mRest = mRest.subspan(length);
        return text;
    }

    /// Whether all that was taken was there, and nothing is left.
    bool IsAtEnd() const { return mIsWhole && mRest.empty(); }
    bool IsWhole() const { return mIsWhole; }

private:
    std::span<const unsigned char> mRest;
    bool mIsWhole = true;
};

}  // namespace Kavra::Common
