# Makes the manual page quillonid-protocol(7), in scdoc's language, from docs/protocol.md: headings, paragraphs, indented
# blocks and tables are all that the document uses.

function scdoc_text(text) {
  gsub(/_/, "\\_", text)
  gsub(/`/, "*", text)
  return text
}

function leave_block() {
  if (in_block) print "```\n"
  in_block = 0
}

BEGIN {
  print "quillonid-protocol(7)\n\n# NAME\n\nquillonid-protocol - what libquillonid and a card reader say to each other"
}

/^# / { print "\n# DESCRIPTION"; next }
/^## / { leave_block(); sub(/^## [0-9]+\. /, ""); print "# " toupper($0); next }

/^    / {
  if (!in_block) print "```"
  in_block = 1
  print substr($0, 5)
  next
}

/^\|[-|]+\|$/ { next }
/^\|/ {
  count = split($0, cell, /[ ]*\|[ ]*/)
  for (i = 2; i < count; i++) print (i > 2 ? ":<" : "|<") " " scdoc_text(cell[i])
  next
}

{
  leave_block()
  print scdoc_text($0)
}

END { print "\n# SEE ALSO\n\n*libquillonid*(3), *qlid*(1)" }
