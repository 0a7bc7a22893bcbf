# SPDX-License-Identifier: Apache-2.0
#
# The code blocks of one language on a page, with fence being the line that opens one; each keeps the
# number of its line on the page.
$0 == fence { inside = 1; print "#line " NR + 1 " \"" FILENAME "\""; next }
$0 == "```" { inside = 0 }
inside { print }
