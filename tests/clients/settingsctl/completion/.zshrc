# Start-up file of an interactive zsh that prints its completions for settingsctl, one per line between two marks.
fpath=("$COMPLETIONS" $fpath)
autoload -Uz compinit && compinit -u -D
unsetopt beep prompt_sp

showCompletions() {
    print '<completions>' > /dev/tty
    zle complete-word
    print '</completions>' > /dev/tty
}
zle -N showCompletions
bindkey '^I' showCompletions

compadd() {
    if [[ ${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]]; then
        builtin compadd "$@"
        return
    fi
    local -a matches
    builtin compadd -A matches "$@"
    (( ${#matches} )) && print -rl -- $matches > /dev/tty
    builtin compadd "$@"
}
PROMPT='<prompt>'
