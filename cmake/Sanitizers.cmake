# Preset linux-asan: applies to every target, tests and programs alike.
if(QUILLMOOR_SANITIZE)
  # -g1 halves the compile time: a report needs line numbers only.
  add_compile_options(-O1 -g1 -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
