# quillmoor_warnings(TARGET): the warning set every target of this project is free of.
function(quillmoor_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(QUILLMOOR_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
