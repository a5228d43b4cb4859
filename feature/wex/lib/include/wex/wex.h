/** @file
 * libwex: the support library of the wex shell. Includes every public header. */
#ifndef WEX_WEX_H
#define WEX_WEX_H

#include <wex/wex_api.h>
#include <wex/parse_tree.h>
#include <wex/exec.h>
#include <wex/output.h>
#include <wex/param.h>
#include <wex/diag.h>
#include <wex/wexd_client.h>

#endif /* WEX_WEX_H */
