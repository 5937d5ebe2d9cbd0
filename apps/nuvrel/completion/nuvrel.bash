# bash completion for nuvrel: verbs, their words and options, and the setting keys.
_nuvrel() {
    local cur=${COMP_WORDS[COMP_CWORD]} verb=${COMP_WORDS[1]}
    if ((COMP_CWORD == 1)); then
        COMPREPLY=($(compgen -W "ask explain settings key diagnostics models netlog install-server --help --version --lang --json --no-network --yes" -- "$cur"))
        return
    fi
    case $verb in
        ask) COMPREPLY=($(compgen -W "--lang --json --no-network --yes --" -- "$cur")) ;;
        explain) COMPREPLY=($(compgen -W "--lang --json --" -- "$cur")) ;;
        settings)
            if ((COMP_CWORD == 2)); then
                COMPREPLY=($(compgen -W "set unset --json" -- "$cur"))
            elif ((COMP_CWORD == 3)); then
                local keys
                keys=$(nuvrel settings --json 2>/dev/null | grep -o '"key":"[^"]*"' | cut -d'"' -f4)
                COMPREPLY=($(compgen -W "$keys" -- "$cur"))
            fi ;;
        key)
            if ((COMP_CWORD == 2)); then COMPREPLY=($(compgen -W "set remove" -- "$cur"))
            elif ((COMP_CWORD == 3)); then COMPREPLY=($(compgen -W "firecrawl" -- "$cur")); fi ;;
        diagnostics) COMPREPLY=($(compgen -W "--copy --lang" -- "$cur")) ;;
        netlog) COMPREPLY=($(compgen -W "--json --limit --lang" -- "$cur")) ;;
        models)
            if ((COMP_CWORD == 2)); then
                COMPREPLY=($(compgen -W "list install add use remove check-updates --help" -- "$cur"))
            fi ;;
    esac
}
complete -F _nuvrel nuvrel
