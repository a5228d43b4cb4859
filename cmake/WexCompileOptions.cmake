# Warning set and sanitizers shared by every target of the project.
add_library(wex_warnings INTERFACE)
target_compile_options(wex_warnings INTERFACE -Wall -Wextra -Wshadow -Wformat=2
                       $<$<BOOL:${WEX_WERROR}>:-Werror>)
# g++ 12 at -O2 reports overlapping copies inside libstdc++'s own
# "text" + std::string concatenation, which cannot overlap (a false positive
# fixed in g++ 13); left on, it fails every optimised build that
# concatenates a literal with a temporary string.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(wex_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# A program built outside the project against this build (the install and
# example tests) compiles with WEX_CONSUMER_C_FLAGS: the build's own C flags
# and its sanitizers.
set(WEX_CONSUMER_C_FLAGS "${CMAKE_C_FLAGS}")
if(WEX_SANITIZE)
  # Applied globally so that the test framework shares the instrumentation.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  string(APPEND WEX_CONSUMER_C_FLAGS " -fsanitize=address,undefined")
endif()
