# bash completion for cimhost, which itself knows what fits.                                   -*- shell-script -*-

_cimhost() {
    local word=${COMP_WORDS[COMP_CWORD]} found
    [[ $word != "=" ]] || word=
    mapfile -t found < <("${COMP_WORDS[0]/#\~/$HOME}" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    if [[ ${found[0]-} == :files ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    else
        COMPREPLY=("${found[@]}")
    fi
}

complete -F _cimhost cimhost
