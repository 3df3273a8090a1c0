# Completion of velmorak-run for bash.
_velmorak_run() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    case $previous in
        -a | --look)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --again)
            mapfile -t COMPREPLY < <(compgen -d -- "$current"; compgen -f -X '!*.json' -- "$current")
            return
            ;;
        --events)
            mapfile -t COMPREPLY < <(compgen -W "-" -- "$current"; compgen -f -- "$current")
            return
            ;;
        --results | --plan | --merge | --partial | --status)
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --set | --scan | --start | -j | --timeout | --parts | --part)
            COMPREPLY=()
            return
            ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "-a -j --set --scan --start --results --timeout --events --again --why --list \
            --look --json --check --plan --parts --bundle --part --merge --partial --status --version --help" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$current"; compgen -f -X '!*.zedra' -- "$current")
    fi
}
complete -o filenames -F _velmorak_run velmorak-run
