# Bash completion of quelmar's command line: options, project files,
# scripts, and the command names at the start of -c
_quelmar() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    case $previous in
        -s)
            COMPREPLY=($(compgen -f -- "$current"))
            return;;
        -c)
            COMPREPLY=($(compgen -W "help tree status check get set remove add rename select selection find
                delete reparent show move rotate scale copy paste duplicate duplicate-resource
                delete-resource purge undo redo history save quit quit!" -- "$current"))
            return;;
    esac
    if [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "-c -s --echo --help --version" -- "$current"))
    else
        COMPREPLY=($(compgen -f -X '!*.json' -- "$current") $(compgen -d -- "$current"))
    fi
}
complete -o filenames -F _quelmar quelmar
