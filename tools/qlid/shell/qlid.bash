# bash completion for qlid: the program knows its own words.
# shellcheck source=/dev/null
source <(qlid completion bash 2>/dev/null)
