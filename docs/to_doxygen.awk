# A public header as Doxygen wants it: its plain comments become documentation of what they stand in front of or behind.
# A record is what lies between two empty lines: a comment and its declarations, which share it when there are several.

BEGIN { RS = ""; FS = "\n" }

{
  if (NR == 1) print "/// @file"
  shared = /^ *\/\// && gsub(/HOSTUTIL_EXPORT|HOSTUTIL_BASIC_IMPORT/, "&") > 1
  if (shared) print "///@{"
  for (i = 1; i <= NF; ++i) {
    line = $i
    sub(/^ *\/\/   /, "&  ", line)  # an example: Markdown wants four blanks
    if (line ~ /^ *\/\//) sub(/\/\//, "///", line)
    else if (line !~ /^}/) sub(/  \/\/ /, "  ///< ", line)
    print line
  }
  if (shared) print "///@}"
  print ""
}
