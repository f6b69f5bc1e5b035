# Build switches shared by every target.
option(TESSARO_WERROR "Treat compiler warnings as errors" OFF)
option(TESSARO_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(TESSARO_BENCH "Build the benchmarks under bench/" OFF)
option(TESSARO_FUZZ "Build the libFuzzer targets under fuzz/ (clang only)" OFF)

add_compile_options(-Wall -Wextra)
if(TESSARO_WERROR)
    add_compile_options(-Werror)
endif()
if(TESSARO_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()
