# Filters a public header for Doxygen: plain comments become documentation comments of the declarations that
# follow them or share their line. A record ends at an empty line: one comment, and the declarations that it
# documents.

BEGIN { RS = ""; FS = "\n" }

{
  if (NR == 1) print "/// @file"
  shared = /^ *\/\// && gsub(/HOSTUTIL_EXPORT|HOSTUTIL_BASIC_IMPORT/, "&") > 1
  if (shared) print "///@{"
  for (i = 1; i <= NF; ++i) {
    line = $i
    sub(/^ *\/\/   /, "&  ", line)  # an example: four blanks in Markdown
    if (line ~ /^ *\/\//) sub(/\/\//, "///", line)
    else if (line !~ /^}/) sub(/  \/\/ /, "  ///< ", line)
    print line
  }
  if (shared) print "///@}"
  print ""
}
