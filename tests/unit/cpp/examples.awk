# SPDX-License-Identifier: Apache-2.0
#
# The examples in the headers' documentation, each with the number of its line there, behind a header
# with what they take for granted. In C they are functions; in C++ each is the body of one, or a main().
BEGIN { print "#include \"" context "\"" }
/@code/ {
  inside = 1
  begins = 1
  next
}
/@endcode/ {
  inside = 0
  print closing
}
inside {
  sub(/^ *\* ?/, "")
  if (begins) {
    isFunction = language == "c" || /^int main/
    number++
    print isFunction ? "" : "void example" number "(norix::Assistant &assistant, Lamp &lamp, Player &player) {{"
    closing = isFunction ? "" : "}}"
    print "#line " FNR " \"" FILENAME "\""
    begins = 0
  }
  print
}
