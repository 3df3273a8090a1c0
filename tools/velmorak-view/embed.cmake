# Writes a source that holds the files of the page: cmake -DFOLDER=page -DOUTPUT=Page.cpp -P embed.cmake
file(GLOB files ${FOLDER}/*)
set(text "#include \"Page.h\"\n\n#include <map>\n\nnamespace {\n\nconst std::map<std::string, std::string_view> parts = {\n")
foreach(file IN LISTS files)
  file(READ ${file} content)
  get_filename_component(name ${file} NAME)
  string(APPEND text "    {\"${name}\", R\"page(${content})page\"},\n")
endforeach()
string(APPEND text "};\n\n}  // namespace\n\n")
string(APPEND text "const std::string_view* partOfPage(const std::string& name) {\n    const auto found = parts.find(name);\n"
  "    return found == parts.end() ? nullptr : &found->second;\n}\n")
file(WRITE ${OUTPUT} "${text}")
