# What zsh offers at the end of a line: zsh -f complete.zsh KORVELCHECK LINE... Each line, then its offers, one a line.
# Completion needs the line editor, and that needs a terminal: an interactive zsh is started in one, and writes to a file.
zmodload zsh/zpty
export ZDOTDIR=$PWD/zsh KORVELCHECK=$1
shift
mkdir $ZDOTDIR
print -rl -- "$@" >$ZDOTDIR/lines
cat >$ZDOTDIR/.zshrc <<'RC'
autoload -Uz compinit
compinit -u -D
source <($KORVELCHECK completion zsh)
lines=("${(@f)$(<$ZDOTDIR/lines)}")

# Notes what would be offered. Calls that only sort words out (-A, -D, -O) pass.
compadd() {
  if (( ${@[1,(i)--]}[(I)-*[ADO]*] )); then
    builtin compadd "$@"
    return
  fi
  local -a offers
  builtin compadd -O offers "$@"
  (( $#offers )) && print -rl -- $offers >>$ZDOTDIR/offers
  builtin compadd "$@"
}

# Instead of a person who types.
zle-line-init() {
  (( $#lines )) || exit
  : >$ZDOTDIR/offers
  BUFFER=$lines[1]
  CURSOR=$#BUFFER
  print -r -- "> $lines[1]" >>$ZDOTDIR/answer
  shift lines
  zle complete-word
  sort -u $ZDOTDIR/offers >>$ZDOTDIR/answer
  BUFFER=
  zle accept-line
}
zle -N zle-line-init
RC
zpty shell zsh -d -i
while zpty -r shell output; do :; done
cat $ZDOTDIR/answer
