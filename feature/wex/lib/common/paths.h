// Fixed paths of the switch's file systems. Every one is composed here from
// the compile-time root WEX_SYSROOT: empty in the shipped library, a sandbox
// folder in the test build.
#ifndef WEX_COMMON_PATHS_H
#define WEX_COMMON_PATHS_H

#ifndef WEX_SYSROOT
#define WEX_SYSROOT ""
#endif

// A fixed path under the root, as a string literal.
#define WEX_PATH(absolute_literal) WEX_SYSROOT absolute_literal

#endif
