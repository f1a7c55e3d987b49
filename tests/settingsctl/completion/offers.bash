# Start-up file of an interactive bash that shows what it offers for settingsctl, one word a line between two marks.
source "$COMPLETIONS/settingsctl.bash"

showOffers() {
    _settingsctl "$@"
    { echo '<offers>'; [[ ${#COMPREPLY[@]} -eq 0 ]] || printf '%s\n' "${COMPREPLY[@]}"; echo '</offers>'; } > /dev/tty
}
complete -F showOffers settingsctl
bind 'set bell-style none'
PS1='<prompt>'
