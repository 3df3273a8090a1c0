# Completion of velmorak-kind for bash.
_velmorak_kind() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "new build check try describe install --version --help" -- "$current")
        return
    fi
    case $previous in
        --shape)
            mapfile -t COMPREPLY < <(compgen -W "row-wise accumulator function source file" -- "$current")
            return
            ;;
        --table)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        new | --set)
            COMPREPLY=()
            return
            ;;
    esac
    if [[ $current == -* ]]; then
        case ${COMP_WORDS[1]} in
            new) mapfile -t COMPREPLY < <(compgen -W "--shape --help" -- "$current") ;;
            check) mapfile -t COMPREPLY < <(compgen -W "--strict --help" -- "$current") ;;
            try) mapfile -t COMPREPLY < <(compgen -W "--set --table --help" -- "$current") ;;
            *) mapfile -t COMPREPLY < <(compgen -W "--help" -- "$current") ;;
        esac
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
    fi
}
complete -o filenames -F _velmorak_kind velmorak-kind
