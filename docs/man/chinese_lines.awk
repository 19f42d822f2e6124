# Joins the lines of a paragraph where Chinese meets Chinese, since a line break would show as a blank between them.
# Bytes, not characters, are looked at: LC_ALL=C.

function indent(line) {
  match(line, /^\t*/)
  return RLENGTH
}

function is_text(line) {
  return line !~ /^\t*$/ && line !~ /^\t*([#|:]|\[-|-|```)/
}

function joins(upper, lower) {
  if (!is_text(upper) || !is_text(lower) || indent(upper) != indent(lower)) return 0
  if (upper ~ /(，|。|；|：|、|）)$/ || lower ~ /^\t*（/) return 1
  return upper ~ /[\200-\377]$/ && lower ~ /^\t*[\200-\377]/
}

/^```/ { literal = !literal }

NR == 1 { held = $0; next }

!literal && joins(held, $0) {
  sub(/^\t*/, "")
  held = held $0
  next
}

{ print held; held = $0 }

END { print held }
