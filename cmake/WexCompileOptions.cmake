# Warning set and sanitizers shared by every target of the project.
add_library(wex_warnings INTERFACE)
target_compile_options(wex_warnings INTERFACE -Wall -Wextra -Wshadow -Wformat=2
                       $<$<BOOL:${WEX_WERROR}>:-Werror>)

if(WEX_SANITIZE)
  # Applied globally so that the test framework shares the instrumentation.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
