/* A program outside the project, built against the installed library. */
#include <wex/wex.h>

#include <ipcq.h>
#include <swapbits.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int main(void)
{
    tree_table_entry entry;
    char trimmed_input[] = "  vsh  ";
    char *trimmed = NULL;

    set_tree_table_entry(&entry, "vsh", "vsh.par");
    if (strcmp(entry.par_file_name, "vsh.par") != 0)
        return 1;
    if (strtrim(trimmed_input, &trimmed) != 3 || strcmp(trimmed, "vsh") != 0)
        return 1;
    free(trimmed);
    /* The platform stand-ins a feature links come with the library. */
    if (swapbits(0x01) != 0x80 || IPCQ_MAX_PAYLOAD == 0)
        return 1;
    puts("consumer ok");
    return 0;
}
