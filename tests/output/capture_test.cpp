// Capture of listing output: the text captured is the text that would have
// been printed, in an exactly sized, always terminated block.
#include <wex/output.h>

#include "support/alloc_failure.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer runtime's exact size of a heap block (not every compiler
// ships its header).
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void *block);
#endif

using wex_test::capture_stdout;

namespace
{

// The block's size: exact under AddressSanitizer, a lower bound elsewhere.
void expect_block_holds_exactly(const char *block, std::size_t size)
{
#if defined(__SANITIZE_ADDRESS__)
    EXPECT_EQ(__sanitizer_get_allocated_size(block), size);
#else
    EXPECT_GE(malloc_usable_size(const_cast<char *>(block)), size);
#endif
}

// Takes the captured text and ends capture, freeing the block.
std::string take_captured()
{
    char *block = wex_get_buf();
    std::string text = block ? std::string(block) : "<null>";
    if (block) {
        EXPECT_EQ(std::strlen(block), wex_get_buf_len());
    }
    wex_reset_redir2buf();
    std::free(block);
    return text;
}

class CaptureTest : public ::testing::Test
{
  protected:
    void TearDown() override { std::free(wex_get_buf()), wex_reset_redir2buf(); }
};

TEST_F(CaptureTest, CapturedTextGrowsExactlyAndMatchesThePrintedText)
{
    int32_t result = 0;
    EXPECT_EQ(capture_stdout([&] { result = wex_buf_printf("%d", 42); }), "42"); // not capturing
    EXPECT_EQ(result, 2);
    EXPECT_EQ(wex_get_buf(), nullptr);

    EXPECT_EQ(wex_set_redir2buf(), 1);
    EXPECT_EQ(wex_is_redir2buf(), 1);
    EXPECT_EQ(wex_buf_printf("ab"), 2);
    expect_block_holds_exactly(wex_get_buf(), 3);
    EXPECT_EQ(
        wex_buf_printf("%-6s|%5d|%x|%c|%%|%s|%.3f %lld", "name", -17, 0xBEEFu, 'z', "", 2.5, -9000000000LL),
        40);
    EXPECT_EQ(wex_get_buf_len(), 42u);
    expect_block_holds_exactly(wex_get_buf(), 43);
    EXPECT_EQ(take_captured(), "abname  |  -17|beef|z|%||2.500 -9000000000");
}

TEST_F(CaptureTest, TextOfAnyLengthIsCapturedWhole)
{
    const std::string long_text(100000, 'q');
    wex_set_redir2buf();
    wex_buf_printf("<");
    EXPECT_EQ(wex_buf_printf("%s>", long_text.c_str()), 100001);
    EXPECT_EQ(wex_get_buf_len(), 100002u);
    expect_block_holds_exactly(wex_get_buf(), 100003);
    EXPECT_EQ(take_captured(), "<" + long_text + ">");

    // Exactly the working buffer's size and one less.
    for (std::size_t size : {16383u, 16384u}) {
        const std::string text(size, 'w');
        wex_set_redir2buf();
        EXPECT_EQ(wex_buf_printf("%s", text.c_str()), static_cast<int32_t>(size));
        EXPECT_EQ(take_captured(), text);
    }

    // A call that produces nothing still leaves a terminated text.
    wex_set_redir2buf();
    EXPECT_EQ(wex_buf_printf("%s", ""), 0);
    ASSERT_NE(wex_get_buf(), nullptr);
    EXPECT_EQ(take_captured(), "");
}

TEST_F(CaptureTest, StateOperationsKeepOrForgetTheBlockAsTold)
{
    wex_set_redir2buf();
    wex_buf_printf("kept");
    char *taken = wex_get_buf();
    EXPECT_EQ(wex_reset_redir2buf(), 0);
    EXPECT_EQ(wex_get_buf(), nullptr);
    EXPECT_EQ(wex_get_buf_len(), 0u);
    EXPECT_STREQ(taken, "kept"); // the reset does not release it
    std::free(taken);

    // A caller's own block becomes the start of the capture.
    char *own = static_cast<char *>(std::malloc(4));
    std::memcpy(own, "xyz", 4);
    EXPECT_EQ(wex_set_buf(own, 3), own);
    EXPECT_EQ(wex_set_buf(nullptr, 7), own);
    EXPECT_EQ(wex_get_buf_len(), 3u);
    wex_set_redir2buf();
    wex_buf_printf("de");
    EXPECT_EQ(take_captured(), "xyzde");

    // Capture turned on again keeps what was captured before.
    wex_set_redir2buf();
    wex_buf_printf("one ");
    wex_set_redir2buf();
    wex_buf_printf("two");
    EXPECT_EQ(take_captured(), "one two");
}

TEST_F(CaptureTest, ABlockThatCannotGrowKeepsTheTextCapturedSoFar)
{
    const std::string long_text(20000, 'L');
    // The text and the three results when allocation 1, 2, 3 fails.
    const std::string kept[] = {long_text + "def", "abcdef", "abc" + long_text};
    int nth = 0;
    int32_t results[3] = {};
    const int failed = wex_test::for_each_allocation_failure(
        [&] {
            wex_set_redir2buf();
            results[0] = wex_buf_printf("abc");
            results[1] = wex_buf_printf("%s", long_text.c_str());
            results[2] = wex_buf_printf("def");
        },
        [&] {
            ASSERT_LT(nth, 3);
            EXPECT_LT(results[nth], 0);
            EXPECT_EQ(results[(nth + 1) % 3] + results[(nth + 2) % 3], nth == 0   ? 20003
                                                                       : nth == 1 ? 6
                                                                                  : 20003);
            EXPECT_EQ(take_captured(), kept[nth]);
            ++nth;
        });
    EXPECT_EQ(failed, 3);
}

} // namespace
