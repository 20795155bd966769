// Memory that fails somewhere on the way: the answer is none, or the right one, and never another.

#include "frame/module/SampleFiles.h"
#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/Program.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <new>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Objects::IMemoryAllocator;
using Objects::ObjModel;

/// Refuses the request of one number, and either all after it or none.
class RefusingAllocator final : public IMemoryAllocator {
public:
    RefusingAllocator(IMemoryAllocator*& place, int number, bool forGood)
        : mPlace(place), mReal(place), mLeft(number), mForGood(forGood) {
        place = this;
    }
    ~RefusingAllocator() override { mPlace = mReal; }

    void* Allocate(std::size_t bytes) override {
        Count();
        return mReal->Allocate(bytes);
    }
    void* AllocateZeroed(std::size_t bytes) override {
        Count();
        return mReal->AllocateZeroed(bytes);
    }
    void Free(void* block, std::size_t bytes) noexcept override { mReal->Free(block, bytes); }

    bool HasRefused() const { return mRefused; }

private:
    void Count() {
        const int left = mLeft--;
        if (left > 0 || (left < 0 && !mForGood)) return;
        mRefused = true;
        throw std::bad_alloc();
    }

    IMemoryAllocator*& mPlace;
    IMemoryAllocator* mReal;
    int mLeft;
    bool mForGood;
    bool mRefused = false;
};

class WithoutMemory : public testing::Test {
protected:
    /// Calls `answer` with every request refused in turn; it says whether it gave none or the right answer.
    template <class Answer>
    void EachRequestRefused(const std::string& what, const Answer& answer) {
        for (IMemoryAllocator** place : {&ObjModel::mDefaultAllocator, &ObjModel::mHeapAllocator}) {
            for (const bool forGood : {false, true}) {
                const Live before;
                bool refused = true;
                int number = 0;
                for (; refused && number < 200; ++number) {
                    const RefusingAllocator allocator(*place, number, forGood);
                    EXPECT_TRUE(answer()) << what << ", request " << number << (forGood ? " and on" : "");
                    refused = allocator.HasRefused();
                }
                EXPECT_FALSE(refused);
                EXPECT_EQ(Live(), before) << what;
            }
        }
    }

    void LoadsNothingElse(const std::filesystem::path& path, const LoadRequest& request = {}) {
        const auto right = LoadFile(handler, path, request);
        ASSERT_TRUE(right) << path;
        EachRequestRefused(path.string(), [&] {
            const auto loaded = LoadFile(handler, path, request);
            return !loaded || (loaded->bytes == right->bytes && loaded->desc.format == right->desc.format &&
                               loaded->desc.width == right->desc.width && loaded->desc.height == right->desc.height &&
                               loaded->desc.textureType == right->desc.textureType);
        });
    }

    void DescribesNothingElse(const std::filesystem::path& path) {
        ImageDesc* const described = handler.GetImageDesc(Wide(path));
        ASSERT_NE(described, nullptr) << path;
        const ImageDesc right = *described;
        described->Delete();
        EachRequestRefused(path.string(), [&] {
            ImageDesc* const desc = handler.GetImageDesc(Wide(path));
            if (desc == nullptr) return true;
            const bool same = desc->width == right.width && desc->height == right.height &&
                              desc->depth == right.depth && desc->format == right.format &&
                              desc->textureType == right.textureType && desc->frameCount == right.frameCount &&
                              desc->orientation == right.orientation && desc->gamma == right.gamma;
            desc->Delete();
            return same;
        });
    }

    /// Of half floats, which the library describes as such and the host's own reader as 32-bit ones.
    std::filesystem::path HalfExr() const {
        return WritePicture(folder, "half.exr", OIIO::ImageSpec(200, 200, 4, OIIO::TypeHalf),
                            std::vector<float>(200 * 200 * 4, 0.5F));
    }

    TemporaryFolder folder;
    MessageRecorder messages;
    OIIOImageHandler handler;
};

TEST_F(WithoutMemory, AHalfFloatPictureIsNeverDescribedAsAnother) {
    DescribesNothingElse(HalfExr());
}

TEST_F(WithoutMemory, EverySampleIsDescribedRightOrNotAtAll) {
    for (const auto& sample : AllSamples()) {
        if (IsDescribed(handler, sample)) DescribesNothingElse(sample);
    }
}

TEST_F(WithoutMemory, PixelsAreNeverThoseOfAnotherWay) {
    const auto exr = HalfExr();
    LoadsNothingElse(exr);
    LoadsNothingElse(exr, {.format = kR32G32B32A32F});
    LoadsNothingElse(exr, {.orientation = kRightTop});
    LoadsNothingElse(exr, {.width = 120, .height = 120});
    LoadsNothingElse(exr, {.width = 100, .height = 1, .orientation = kBottomLeft});
}

TEST_F(WithoutMemory, EverySampleIsLoadedRightOrNotAtAll) {
    for (const auto& sample : AllSamples()) {
        for (const LoadRequest& request :
             {LoadRequest{}, LoadRequest{.width = 5, .height = 5, .orientation = kLeftTop}}) {
            if (LoadFile(handler, sample, request)) LoadsNothingElse(sample, request);
        }
    }
}

}  // namespace
}  // namespace Kavra::Tests
