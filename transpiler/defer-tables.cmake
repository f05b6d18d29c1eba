# Writes a copy of the parser ACORN to OUT whose Unicode tables and two large expressions are made when they are first
# needed. Most sources need none of them, and making them takes most of the time of loading ob.js.
# cmake -DACORN=FILE -DOUT=FILE -P defer-tables.cmake

file(READ "${ACORN}" text)

# Replaces the only occurrence of `old`; a parser that has changed fails the build instead of loading slowly.
function(replace_once old new)
  string(FIND "${text}" "${old}" first)
  string(FIND "${text}" "${old}" last REVERSE)
  if(first EQUAL -1 OR NOT first EQUAL last)
    message(FATAL_ERROR "${ACORN} does not have this text once: ${old}")
  endif()
  string(REPLACE "${old}" "${new}" text "${text}")
  set(text "${text}" PARENT_SCOPE)
endfunction()

replace_once([=[var nonASCIIidentifierStart = new RegExp("[" + nonASCIIidentifierStartChars + "]");]=]
  [=[var deferred = function (characters) {
  var expression;
  return { test: function (text) { return (expression = expression || new RegExp("[" + characters + "]")).test(text) } }
};
var nonASCIIidentifierStart = deferred(nonASCIIidentifierStartChars);]=])
replace_once([=[var nonASCIIidentifier = new RegExp("[" + nonASCIIidentifierStartChars + nonASCIIidentifierChars + "]");]=]
  [=[var nonASCIIidentifier = deferred(nonASCIIidentifierStartChars + nonASCIIidentifierChars);]=])
replace_once([=[
  buildUnicodeData(ecmaVersion);
]=] "\n")
replace_once([=[this.unicodeProperties = data[parser.options.ecmaVersion >= 13 ? 13 : parser.options.ecmaVersion];]=]
  [=[var dataVersion = parser.options.ecmaVersion >= 13 ? 13 : parser.options.ecmaVersion;
  if (!data[dataVersion]) { buildUnicodeData(dataVersion); }
  this.unicodeProperties = data[dataVersion];]=])

file(WRITE "${OUT}" "${text}")
