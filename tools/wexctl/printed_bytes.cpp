#include "printed_bytes.h"

#include <cstdio>
#include <sys/types.h>

namespace wexctl
{
namespace
{

struct Counter {
    std::FILE *to;
    std::size_t bytes = 0;
};

ssize_t count_and_pass(void *cookie, const char *bytes, std::size_t size)
{
    auto *counter = static_cast<Counter *>(cookie);
    counter->bytes += size;
    // A failed write leaves its mark on the real stream, where the program's
    // last flush finds it; the count stays whole.
    std::fwrite(bytes, 1, size, counter->to);
    return static_cast<ssize_t>(size);
}

// Restores the real standard output however the printing ends.
class StandardOutputSwap
{
  public:
    explicit StandardOutputSwap(std::FILE *through) : real_(stdout) { stdout = through; }
    ~StandardOutputSwap() { stdout = real_; }
    StandardOutputSwap(const StandardOutputSwap &) = delete;
    StandardOutputSwap &operator=(const StandardOutputSwap &) = delete;

  private:
    std::FILE *real_;
};

} // namespace

std::optional<std::size_t> printed_bytes(const std::function<void()> &print)
{
    Counter counter{stdout};
    std::FILE *through = fopencookie(&counter, "w", {nullptr, count_and_pass, nullptr, nullptr});
    if (!through)
        return std::nullopt;
    setvbuf(through, nullptr, _IOFBF, 64 * 1024);
    {
        const StandardOutputSwap swap(through);
        print();
    }
    std::fclose(through);
    return counter.bytes;
}

} // namespace wexctl
