# Settings the fuzz build (VEXA_FUZZ=ON) applies to everything it compiles: coverage hooks for
# libFuzzer in every library, so the fuzzer sees the branches of the code under test and not
# only those of the harness. Included from the top CMakeLists.txt before any target exists.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  message(FATAL_ERROR "VEXA_FUZZ needs clang (libFuzzer), but the C++ compiler is "
                      "${CMAKE_CXX_COMPILER_ID}. Configure a separate build directory with "
                      "-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVEXA_FUZZ=ON.")
endif()
add_compile_options(-fsanitize=fuzzer-no-link)
# A fuzzer without ASan and UBSan finds only the faults that crash on their own. The sanitizer
# build (VEXA_SANITIZE) adds both to every target; without it, add them here.
if(NOT VEXA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
