# embed_files(LIBRARY NAME HEADER BASE FILE...)   makes a library of the files, given relative to the folder BASE, to be
# embedded in a program: quillmoor::NAME[] and NAMECount of struct EmbeddedFile, which HEADER declares. Run as a script
# (cmake -P with -DOUT -DNAME -DHEADER -DBASE -DFILES), it writes the library's source.
if(CMAKE_SCRIPT_MODE_FILE)
  set(arrays "")
  set(table "")
  set(number 0)
  separate_arguments(FILES UNIX_COMMAND "${FILES}")
  foreach(file ${FILES})
    file(READ ${BASE}/${file} hex HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
    string(APPEND arrays "const unsigned char file${number}[] = {${bytes}};\n")
    string(APPEND table "    {\"${file}\", file${number}, sizeof(file${number})},\n")
    math(EXPR number "${number} + 1")
  endforeach()
  file(WRITE ${OUT} "#include \"${HEADER}\"\n\nnamespace quillmoor {\nnamespace {\n${arrays}}  // namespace\n\n"
    "const EmbeddedFile ${NAME}[] = {\n${table}};\nconst std::size_t ${NAME}Count = ${number};\n\n}  // namespace quillmoor\n")
  return()
endif()

set(QUILLMOOR_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_FILE})
function(embed_files library name header base)
  set(out ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  list(TRANSFORM ARGN PREPEND ${base}/ OUTPUT_VARIABLE sources)
  list(JOIN ARGN " " files)
  add_custom_command(OUTPUT ${out} DEPENDS ${sources} ${QUILLMOOR_EMBED_SCRIPT} VERBATIM
    COMMAND ${CMAKE_COMMAND} -DOUT=${out} -DNAME=${name} -DHEADER=${header} -DBASE=${base} "-DFILES=${files}"
      -P ${QUILLMOOR_EMBED_SCRIPT})
  add_library(${library} STATIC ${out})
  target_include_directories(${library} PRIVATE ${PROJECT_SOURCE_DIR}/src)
endfunction()
