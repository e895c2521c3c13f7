# quillmoor_warnings(TARGET): the warnings that every target of this project compiles without.
function(quillmoor_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 falsely reports overlapping copies in std::string + "text" (GCC bug 105651).
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(QUILLMOOR_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
