# bash completion for 3ds2mcx. The options are those that its help names.
_3ds2mcx()
{
    local cur prev words cword split
    _init_completion -s || return
    case $prev in
    --output-dir)
        _filedir -d
        return
        ;;
    --preview)
        _filedir png
        return
        ;;
    --report)
        _filedir '@(html|htm)'
        return
        ;;
    --restored)
        _filedir 3ds
        return
        ;;
    --preview-frame)
        mapfile -t COMPREPLY < <(compgen -W strip -- "$cur")
        return
        ;;
    -o | --output | --header | --animation | --summary)
        _filedir
        return
        ;;
    -j | --jobs | --clump-name | --scale | --size | --opacity | --weights | --texture-extension | --preview-size)
        return
        ;;
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$("$1" --help 2>/dev/null | grep -oE '^  -[^ ]*(, --?[a-z-]+)*' |
            grep -oE -e '--?[a-z-]+')" -- "$cur")
        return
    fi
    _filedir '@(3ds|3DS|3Ds|3dS)'
} && complete -F _3ds2mcx 3ds2mcx
