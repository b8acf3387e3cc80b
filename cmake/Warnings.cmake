# How every target here is compiled. Linked privately, so that users of the libraries do not inherit it.
add_library(audlmd_warnings INTERFACE)
target_compile_options(audlmd_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    # Results are bit-exact by contract: no fused multiply-add that the code does not write.
    -ffp-contract=off)

# The guards that host/services/Threads.hpp declares, which g++ does not know. Apart from the above, because a test hands
# those to either compiler.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-Wthread-safety -Werror=thread-safety)
endif()
