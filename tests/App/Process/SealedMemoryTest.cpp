#include "SealedMemory.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <array>
#include <fcntl.h>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace tessly::test {
namespace {

constexpr qint64 largest = 10'000'000;

TEST(SealedMemory, HandsOverWhatItWasMadeOf)
{
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("a\0b\n", 4), QByteArray(3'000'000, 'x')}) {
        const int descriptor = SealedMemory::make(bytes);
        const SealedMemory memory(descriptor, largest);
        ::close(descriptor);
        EXPECT_EQ(memory.bytes(), bytes);
    }
}

TEST(SealedMemory, NobodyCanChangeItOrCutItShort)
{
    const int descriptor = SealedMemory::make("bytes");
    EXPECT_EQ(::ftruncate(descriptor, 0), -1);
    EXPECT_EQ(::pwrite(descriptor, "other", 5, 0), -1);
    ::close(descriptor);
}

TEST(SealedMemory, TakesNoMoreThanItIsToTake)
{
    const int descriptor = SealedMemory::make("bytes");
    EXPECT_EQ(SealedMemory(descriptor, 5).bytes(), "bytes");
    EXPECT_THROW((SealedMemory{descriptor, 4}), std::system_error);
    ::close(descriptor);
}

TEST(SealedMemory, TakesNothingElse)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    std::array<int, 2> pipe = {};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const int unsealed = ::memfd_create("test", MFD_ALLOW_SEALING);
    const int halfSealed = ::memfd_create("test", MFD_ALLOW_SEALING);
    ASSERT_EQ(::fcntl(halfSealed, F_ADD_SEALS, F_SEAL_WRITE), 0);
    for (const int descriptor : {-1, file.handle(), pipe[0], unsealed, halfSealed}) {
        EXPECT_THROW((SealedMemory{descriptor, largest}), std::system_error) << descriptor;
    }
    for (const int descriptor : {pipe[0], pipe[1], unsealed, halfSealed}) {
        ::close(descriptor);
    }
}

} // namespace
} // namespace tessly::test
