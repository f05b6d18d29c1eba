# Writes the table of all texts that are translated, for translators and as the English table:
#   cmake -DSOURCES=FOLDER -DTABLE=FILE -P cmake/StringTable.cmake
# A text is {"key", "English"}; a long one is several literals.
file(GLOB_RECURSE sources "${SOURCES}/*.cpp")
set(lines)
foreach(source IN LISTS sources)
  file(READ "${source}" text)
  # Lists of CMake are separated by semicolons.
  string(REPLACE ";" "\\x3b" text "${text}")
  string(REGEX MATCHALL "{\"[a-z_]+\\.[a-z_.]+\",[ \n]*\"[^{}]*\"}" pairs "${text}")
  foreach(pair IN LISTS pairs)
    string(REGEX REPLACE "\"[ \n]+\"" "" pair "${pair}")
    string(REGEX REPLACE "^{(\"[^\"]*\"),[ \n]*(\".*\")}$" "\\1 = \\2;" line "${pair}")
    string(REPLACE ";" "" line "${line}")
    list(APPEND lines "${line}")
  endforeach()
endforeach()
list(REMOVE_DUPLICATES lines)
list(SORT lines)
list(JOIN lines ";\n" table)
string(REPLACE "\\x3b" ";" table "${table}")
file(WRITE "${TABLE}" "/* The texts of the library's errors: the keys, and the English texts. */\n${table};\n")
