# fish completion for qlid: the program knows its own words.
qlid completion fish 2>/dev/null | source
