// The virtual context this process runs in.
#ifndef WEX_COMMON_CONTEXT_H
#define WEX_COMMON_CONTEXT_H

namespace wex
{

// The context's number: the low 16 bits of WARDEN_KEL_ID read as the
// switch's 32-bit strtol reads it, 1 when the variable is not set.
unsigned context_number() noexcept;

} // namespace wex

#endif
