# Writes a source file with the bytes of files: cmake -D FOLDER=... -D FILES=a;b -D OUTPUT=... -P
set(arrays "")
set(table "")
set(number 0)
foreach(name IN LISTS FILES)
  file(READ "${FOLDER}/${name}" bytes HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "const unsigned char kFile${number}[] = {${bytes}0};\n")
  string(APPEND table "    {\"${name}\", kFile${number}, sizeof kFile${number} - 1},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUTPUT}" "#include \"ipodctl/serve/static_files.h\"

namespace tool {
namespace {

${arrays}
}  // namespace

const BuiltInFile kBuiltInFiles[] = {
${table}    {nullptr, nullptr, 0}};

}  // namespace tool
")
