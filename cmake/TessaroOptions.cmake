# Build switches shared by every target.
option(TESSARO_WERROR "Treat compiler warnings as errors" OFF)
option(TESSARO_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(TESSARO_BENCH "Build the benchmarks under bench/" OFF)
option(TESSARO_FUZZ "Build the libFuzzer targets under fuzz/ (clang only)" OFF)

add_compile_options(-Wall -Wextra)
if(TESSARO_WERROR)
    add_compile_options(-Werror)
endif()

if(TESSARO_FUZZ AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TESSARO_FUZZ needs clang's libFuzzer: configure with -DCMAKE_CXX_COMPILER=clang++")
endif()

# The fuzz targets run under the same sanitizers, so a fuzz build has them too.
if(TESSARO_SANITIZE OR TESSARO_FUZZ)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

# Coverage feedback for libFuzzer in every object; only the fuzz targets link
# libFuzzer's driver (fuzz/CMakeLists.txt).
if(TESSARO_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
