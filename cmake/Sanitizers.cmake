# Preset linux-asan: every target, the tests and the programs alike.
if(QUILLMOOR_SANITIZE)
  # Compiled in half the time: a report needs the lines of a program, and no more of it.
  add_compile_options(-O1 -g1 -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
