# quillmoor_warnings(TARGET): the warning set every target of this project is free of.
function(quillmoor_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in any std::string + "text" (its bug 105651).
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(QUILLMOOR_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
