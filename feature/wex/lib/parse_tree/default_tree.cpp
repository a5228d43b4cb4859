// The default parse tree, kept compressed with the system's gzip.
#include "common/paths.h"

#include <wex/parse_tree.h>

#include "execute_program.h"

#include <sys/stat.h>

namespace
{

constexpr char kDefaultTree[] = WEX_PATH("/tarn/etc/par") "/default/main_tree.par";
constexpr char kCompressedTree[] = WEX_PATH("/tarn/etc/par") "/default/main_tree.par.gz";
constexpr char kGzip[] = WEX_PATH("/bin/gzip");

bool default_tree_exists() noexcept
{
    struct stat st;
    return stat(kDefaultTree, &st) == 0;
}

} // namespace

extern "C" {

WEX_API int32_t wex_default_parse_tree_zip(void) noexcept
{
    if (!default_tree_exists())
        return -1;
    return execute_program_and_wait(kGzip, "-f", kDefaultTree, nullptr);
}

WEX_API int32_t wex_default_parse_tree_unzip(void) noexcept
{
    if (default_tree_exists())
        return 0;
    // gzip's own result does not matter: whether the tree is back does.
    execute_program_and_wait(kGzip, "-df", kCompressedTree, nullptr);
    return chmod(kDefaultTree, 0666);
}

} // extern "C"
