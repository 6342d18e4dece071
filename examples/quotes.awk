# Checks that every line of code in a header's first comment and in README.md is part of a compiled example,
# and that a result shown in a comment after it is tested there. Ignores white space.
#
#   awk -f quotes.awk EXAMPLE... quoting=1 HEADER... README.md

!quoting {
  examples = examples packed($0)
  next
}

FNR == 1 {
  header = FILENAME ~ /\.h$/
  fenced = 0
  if (header) shown[FILENAME] = 0
}

header && !/^\/\// { header = 0 }
header && /^\/\/   / { check(substr($0, 3)) }

/^```/ {
  fenced = !fenced && /cpp|cmake/
  next
}
fenced { check($0) }

END {
  for (file in shown) if (shown[file] == 0) complain(file " shows no example")
  exit failed
}

function check(line,    code, result) {
  ++shown[FILENAME]
  code = line
  sub(/ *(\/\/.*|\.\.\.)$/, "", code)
  result = line
  if (sub(/^.*[^; ]  +\/\/ /, "", result) && result ~ /^("[^"]*"|[0-9]+|0x[0-9A-F]+)$/) {
    code = code "==" result
  }
  if (index(examples, packed(code)) == 0) complain(FILENAME ": in no example: " code)
}

function packed(text) {
  gsub(/[ \t]/, "", text)
  return text
}

function complain(message) {
  print message
  failed = 1
}
