# SPDX-License-Identifier: Apache-2.0
#
# Makes a page of the project one of Doxygen's: awk -f doxygen-filter.awk PAGE. In a page, a link
# names a file and a heading; Doxygen wants names that are unique in all pages. Links to what is no page of
# build/docs/pages become plain text. The README's headings get no names: they would stand among the pages
# in the table of contents.

# "docs/../a/./b.md" → "a/b.md"
function normal(path,    parts, n, i, out, depth) {
  n = split(path, parts, "/")
  depth = 0
  for (i = 1; i <= n; ++i) {
    if (parts[i] == ".." && depth > 0) { --depth } else if (parts[i] != "." && parts[i] != "") { out[++depth] = parts[i] }
  }
  path = out[1]
  for (i = 2; i <= depth; ++i) { path = path "/" out[i] }
  return path
}

# The name of a page: "docs/threads.md" → "docs_threads"
function name_of(path) {
  if (path == "README.md") { return "index" }
  sub(/\.md$/, "", path)
  gsub(/[^A-Za-z0-9]/, "_", path)
  return path
}

function slug(heading) {
  heading = tolower(heading)
  gsub(/[^a-z0-9 _-]/, "", heading)
  gsub(/ /, "-", heading)
  return heading
}

# What a link of this page becomes; empty when it leads to no page.
function target(link,    hash, file, anchor) {
  if (link ~ /^(https?|mailto):/) { return link }
  hash = index(link, "#")
  file = hash ? substr(link, 1, hash - 1) : link
  anchor = hash ? substr(link, hash + 1) : ""
  file = file == "" ? page : normal(folder "/" file)
  if (!(file in pages)) { return "" }
  return "@ref " name_of(file) (anchor == "" ? "" : "_" anchor)
}

function links(line,    out, text, link, to) {
  out = ""
  while (match(line, /!?\[[^]]*\]\([^)]+\)/)) {
    text = substr(line, RSTART, RLENGTH)
    out = out substr(line, 1, RSTART - 1)
    line = substr(line, RSTART + RLENGTH)
    link = text
    sub(/^.*\]\(/, "", link); sub(/\)$/, "", link)
    sub(/\]\([^)]*\)$/, "", text)
    if (text ~ /^!/) {
      sub(/.*\//, "", link)
      out = out "<img src=\"" link "\" alt=\"" substr(text, 3) "\">"
      continue
    }
    text = substr(text, 2)
    to = target(link)
    out = out (to == "" ? text : "[" text "](" to ")")
  }
  return out line
}

# Code in a line, in a way that leaves nothing of it to Doxygen but the names that it knows.
function code(line,    out, span) {
  out = ""
  while (match(line, /`[^`]+`/)) {
    span = substr(line, RSTART + 1, RLENGTH - 2)
    gsub(/[\\@&<>#%"*_]/, "\\\\&", span)
    gsub(/--/, "\\--", span)
    out = out substr(line, 1, RSTART - 1) "<code>" span "</code>"
    line = substr(line, RSTART + RLENGTH)
  }
  return out line
}

BEGIN {
  while ((getline path < "build/docs/pages") > 0) { pages[path] }
  page = ARGV[1]
  sub(ENVIRON["PWD"] "/", "", page)
  folder = page
  if (!sub(/\/[^\/]*$/, "", folder)) { folder = "." }
}

/^```/ { inside = !inside; sub(/^```console/, "```"); print; next }
inside { print; next }
/^# / { print $0 " {#" (page == "README.md" ? "mainpage" : name_of(page)) "}"; next }
/^##+ / && page == "README.md" { print; next }
/^##+ / { heading = $0; sub(/^#+ /, "", heading); print $0 " {#" name_of(page) "_" slug(heading) "}"; next }
{ gsub(/src="docs\//, "src=\""); print code(links($0)) }
