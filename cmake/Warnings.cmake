# Warnings are errors in everything that is ours.
add_library(ZuWarnings INTERFACE)
target_compile_options(ZuWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wunused
  -Wconversion -Wno-sign-conversion -Werror)
# g++ 12 sees faults in its own std::string when it optimises, where there are none (GCC bugs 105329, 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(ZuWarnings INTERFACE
    $<$<CONFIG:Release>:-Wno-restrict;-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>)
endif()
if(ZU_SANITIZE)
  target_compile_options(ZuWarnings INTERFACE -fsanitize=${ZU_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(ZuWarnings INTERFACE -fsanitize=${ZU_SANITIZE})
endif()
