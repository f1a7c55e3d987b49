# Completion of settingsctl for bash. Source it, or install it as bash-completion/completions/settingsctl.
# Current values come from the running host; without one, keys and fixed words are offered.

# The answer of the host whose socket the command line names, if there is one and it answers quickly.
_settingsctl_ask() {
    "${COMP_WORDS[0]}" ${socket:+--socket "$socket"} --timeout 1 "$@" 2>/dev/null
}

# Offers those of the given words that continue what is typed, quoted as it is.
_settingsctl_offer() {
    local word
    for word; do
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
    done
}

_settingsctl_offer_keys() {
    local -a keys
    mapfile -t keys < <(_settingsctl_ask list)
    _settingsctl_offer "${keys[@]}"
}

# Values of the key that is given: the known ones, and the current one.
_settingsctl_offer_values() {
    local -a values=()
    local current
    case $1 in
        captionsEnabled | doNotDisturbEnabled | handsFreeEnabled | handsFreeAlwaysOn* | pttAlwaysOn*) values=(true false) ;;
        captionsFontSize) values=(FONT_SMALL FONT_MEDIUM FONT_LARGE FONT_EXTRA_LARGE) ;;
        captionsStyles) values=(STYLE_WHITE_ON_BLACK STYLE_BLACK_ON_WHITE STYLE_YELLOW_ON_BLACK STYLE_YELLOW_ON_BLUE) ;;
    esac
    current=$(_settingsctl_ask get --value -- "$1")
    # A backslash may stand for a control character, which cannot be typed like that.
    if [[ -n $current && $current != *\\* && " ${values[*]} " != *" $current "* ]]; then
        values+=("$current")
    fi
    _settingsctl_offer "${values[@]}"
}

_settingsctl_offer_for_device() {
    case ${#arguments[@]},${arguments[1]} in
        1,) _settingsctl_offer show locale locales timezone handsfree setting captions do-not-disturb ;;
        2,handsfree | 2,captions | 2,do-not-disturb) _settingsctl_offer on off ;;
        2,setting) _settingsctl_offer_keys ;;
        3,setting) _settingsctl_offer_values "${arguments[2]}" ;;
    esac
}

_settingsctl_offer_for_verb() {
    case ${#arguments[@]},${arguments[0]} in
        0,) _settingsctl_offer get set watch list selected page open-settings logout device ;;
        *,get | 1,set) _settingsctl_offer_keys ;;
        2,set) _settingsctl_offer_values "${arguments[1]}" ;;
        *,device) _settingsctl_offer_for_device ;;
    esac
}

_settingsctl() {
    local cur=${COMP_WORDS[COMP_CWORD]} option='' socket='' word index
    local -a arguments=()
    COMPREPLY=()
    for ((index = 1; index < COMP_CWORD; index++)); do
        word=${COMP_WORDS[index]//[\"\'\\]/}
        if [[ -n $option ]]; then
            # "--socket=PATH" comes as three words.
            [[ $word == '=' ]] && continue
            [[ $option == --socket ]] && socket=$word
            option=''
        elif [[ $word == --socket || $word == --device-socket || $word == --timeout ]]; then
            option=$word
        elif [[ $word != -* ]]; then
            arguments+=("$word")
        fi
    done

    if [[ $option == --*socket ]]; then
        [[ $cur == '=' ]] && cur=''
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    elif [[ -n $option ]]; then
        :
    elif [[ $cur == -* ]]; then
        _settingsctl_offer --socket --device-socket --json --value --quiet --timeout --version --help
        [[ ${arguments[0]} == page ]] && _settingsctl_offer --new-key
    else
        _settingsctl_offer_for_verb
    fi
}

complete -F _settingsctl settingsctl
