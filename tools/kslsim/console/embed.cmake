# Writes a C++ source to OUT that holds the text of each of the FILES.
set(rows "")
foreach(file ${FILES})
  get_filename_component(name ${file} NAME)
  file(READ ${file} text)
  string(APPEND rows "  {\"/${name}\", R\"CONSOLE(${text})CONSOLE\"},\n")
endforeach()
file(WRITE ${OUT} "#include \"tools/kslsim/Console.h\"\n\nnamespace kslsim {\n\n"
                  "const ConsoleFile CONSOLE_FILES[] = {\n${rows}};\n"
                  "const size_t CONSOLE_FILE_COUNT = sizeof(CONSOLE_FILES) / sizeof(CONSOLE_FILES[0]);\n\n"
                  "}  // namespace kslsim\n")
