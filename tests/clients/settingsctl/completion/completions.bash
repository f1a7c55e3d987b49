# Start-up file of an interactive bash that prints its completions for settingsctl, one per line between two marks.
source "$COMPLETIONS/settingsctl.bash"

showCompletions() {
    _settingsctl "$@"
    { echo '<completions>'; [[ ${#COMPREPLY[@]} -eq 0 ]] || printf '%s\n' "${COMPREPLY[@]}"; echo '</completions>'; } > /dev/tty
}
complete -F showCompletions settingsctl
bind 'set bell-style none'
PS1='<prompt>'
