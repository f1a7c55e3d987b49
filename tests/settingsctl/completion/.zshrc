# Start-up file of an interactive zsh that shows what it offers for settingsctl, one word a line between two marks.
fpath=("$COMPLETIONS" $fpath)
autoload -Uz compinit && compinit -u -D
unsetopt beep prompt_sp

showOffers() {
    print '<offers>' > /dev/tty
    zle complete-word
    print '</offers>' > /dev/tty
}
zle -N showOffers
bindkey '^I' showOffers

compadd() {
    if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
        builtin compadd "$@"
        return
    fi
    local -a offers
    builtin compadd -A offers "$@"
    (( ${#offers} )) && print -rl -- $offers > /dev/tty
    builtin compadd "$@"
}
PROMPT='<prompt>'
