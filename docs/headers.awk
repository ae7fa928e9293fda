# Doxygen's filter of the headers. The comment on top of a file is about the file. A comment holds
# for all declarations below it up to an empty line, so those that follow the first one get a copy.
# In the C header, all comments are documentation.
function isDeclaration() {
  return $0 !~ /^ *(\/|\*|public:|private:|protected:|[}#]|(class|struct|enum|namespace|template|extern)\>)/ &&
    $0 !~ /^ *$/ && $0 !~ /\/\/\/</
}
FNR == 1 { isC = FILENAME ~ /lirvox_c\.h$/ }
isC {
  if (FNR == 1) sub(/^\/\* /, "/** @file\n * ")
  sub(/^\/\*$/, "/** @file")
  # Nothing for a reader.
  if (/^#define LIRVOX_C_EXPORT/) print "/** @cond */\n" $0 "\n/** @endcond */"
  if (/^#define LIRVOX_C_EXPORT/) next
  if (!/^\//) sub(/\/\* /, "/**< ")
  if (!/^\/\* ---/) sub(/^\/\* /, "/** ")
  if (/^LIRVOX_C_EXPORT/ && previous ~ /;$/ || /^#define/ && previous ~ /^#define/) print comment
  if (/^\/\*\*/) comment = ""
  if (/^(\/\*\*| \*)/) comment = comment (comment ? "\n" : "") $0
  previous = $0
  print
  next
}
FNR == 1 { sub(/^\/\/ /, "/// @file\n/// "); inTop = 1 }
FNR > 1 && inTop && /^\/\/ / { sub(/^\/\/ /, "/// ") }
inTop && !/^\/\/\// { inTop = 0 }
inTop { print; next }
/^ *\/\/\// && !/\/\/\/</ {
  comment = fresh ? comment "\n" $0 : $0
  fresh = 1
  print
  next
}
/^ *$/ || /^ *\/\/($|[^\/])/ || /^ *(class|struct|enum|namespace|template|private)/ { comment = "" }
{
  if (comment != "" && !fresh && depth == 0 && isDeclaration()) print comment
  fresh = 0
  line = $0
  depth += gsub(/[({]/, "", line) - gsub(/[)}]/, "", line)
  if (comment == "") depth = 0
  print
}
