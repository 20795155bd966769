/// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace Kavra::Common {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : mNumber(number) {}
    Descriptor(Descriptor&& other) noexcept : mNumber(std::exchange(other.mNumber, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(mNumber, other.mNumber);
        return *this;
    }
    ~Descriptor() { Close(); }

    explicit operator bool() const { return mNumber >= 0; }
    int Number() const { return mNumber; }
    void Close() {
        if (mNumber >= 0) close(std::exchange(mNumber, -1));
    }

private:
    int mNumber = -1;
};

}  // namespace Kavra::Common
