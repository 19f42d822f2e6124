# Makes the manual page quillonid-protocol(7), in scdoc's language, from docs/protocol.md or its Chinese twin: headings,
# paragraphs, indented blocks and tables are all that the documents use.

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
  chinese = ARGV[1] ~ /zh_CN/
  name = chinese ? "名称" : "NAME"
  about = chinese ? "libquillonid 与读卡器之间的协议" : "what libquillonid and a card reader say to each other"
  description = chinese ? "说明" : "DESCRIPTION"
  see_also = chinese ? "参见" : "SEE ALSO"
  print "quillonid-protocol(7)\n\n# " name "\n\nquillonid-protocol - " about
}

/^# / { print "\n# " description; next }
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

END { print "\n# " see_also "\n\n*libquillonid*(3), *qlid*(1)" }
