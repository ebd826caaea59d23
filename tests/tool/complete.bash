# What bash offers at the end of a line: bash complete.bash KORVELCHECK LINE... Each line, then its offers, one a line.
set -u
source <("$1" completion bash)
shift
function=$(complete -p korvelcheck | sed -n 's/^complete -F \([^ ]*\) korvelcheck$/\1/p')
for line in "$@"; do
  printf '> %s\n' "$line"
  # As readline splits it: '=' is a word of its own, and a blank at the end begins an empty word.
  read -r -a COMP_WORDS <<<"${line//=/ = }"
  case $line in *' ' | *=) COMP_WORDS+=('') ;; esac
  [[ $line == *= ]] && unset 'COMP_WORDS[-1]'
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  "$function" korvelcheck "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
  ((${#COMPREPLY[@]} == 0)) || printf '%s\n' "${COMPREPLY[@]}" | sort
done
