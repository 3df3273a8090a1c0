# Completion of velmorak-batch for bash.
_velmorak_batch() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    case $previous in
        --runner)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --output)
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --threads | --retries | --setup | --time | --memory | --partition | --account | --at-once | --ranks)
            COMPREPLY=()
            return
            ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--runner --output --force --threads --retries --setup --time --memory \
            --partition --account --at-once --ranks --version --help" -- "$current")
    elif [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "slurm htcondor sge snakemake dask mpi" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
    fi
}
complete -o filenames -F _velmorak_batch velmorak-batch
