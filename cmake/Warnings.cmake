# Warnings are errors in everything that is ours.
add_library(ZuWarnings INTERFACE)
target_compile_options(ZuWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wunused
  -Wconversion -Wno-sign-conversion -Werror)
if(ZU_SANITIZE)
  target_compile_options(ZuWarnings INTERFACE -fsanitize=${ZU_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(ZuWarnings INTERFACE -fsanitize=${ZU_SANITIZE})
endif()
