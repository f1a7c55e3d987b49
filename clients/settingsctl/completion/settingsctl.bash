# Completion of settingsctl for bash. Source it, or install it as bash-completion/completions/settingsctl.
# "settingsctl complete" knows what can be typed. Here it is matched with what is typed already, and quoted like it.

_settingsctl_add() {
    local word=$1
    case $cur in
        \'*)
            [[ $word != *\'* && $word == "${cur:1}"* ]] && COMPREPLY+=("$word")
            ;;
        \"*)
            word=${word//\\/\\\\} word=${word//\"/\\\"} word=${word//\$/\\\$} word=${word//\`/\\\`}
            [[ $word == "${cur:1}"* ]] && COMPREPLY+=("$word")
            ;;
        *)
            [[ $word == "${cur//\\/}"* ]] && COMPREPLY+=("$(printf %q "$word")")
            ;;
    esac
}

_settingsctl() {
    local cur=${COMP_WORDS[COMP_CWORD]} line
    local -a before=("${COMP_WORDS[@]:1:COMP_CWORD-1}")
    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == files ]]; then
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "${cur#=}")
        else
            _settingsctl_add "${line%%$'\t'*}"
        fi
    done < <("${COMP_WORDS[0]}" complete "${before[@]//[\"\'\\]/}" "$cur" 2>/dev/null)
}

complete -F _settingsctl settingsctl
