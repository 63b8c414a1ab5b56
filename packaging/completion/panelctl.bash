# bash completion for panelctl(1)

_panelctl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands='discover ping touchback trigger upload touches doctor'
    local options='--panel-address --panel --interface --timeout --json --verbose --version --help'
    local word command=

    # "--name=value" comes as three words.
    [[ $current == '=' ]] && current=
    [[ $previous == '=' ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}

    case $previous in
    --interface)
        mapfile -t COMPREPLY < <(compgen -W "$(command ls /sys/class/net 2>/dev/null)" -- "$current")
        return
        ;;
    --record)
        compopt -o default 2>/dev/null
        COMPREPLY=()
        return
        ;;
    --panel-address | --panel | --timeout | --seconds | --max-size)
        COMPREPLY=()
        return
        ;;
    esac

    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case " $commands " in
        *" $word "*)
            command=$word
            break
            ;;
        esac
    done

    case $command in
    '') options="$commands $options" ;;
    discover) options="$options --seconds" ;;
    touchback)
        options="$options --hdmi"
        [[ $current == -* ]] || options='on off'
        ;;
    touches) options="$options --record --max-size" ;;
    doctor) options="$options --touches" ;;
    upload)
        if [[ $current != -* ]]; then
            compopt -o default 2>/dev/null
            COMPREPLY=()
            return
        fi
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
}

complete -F _panelctl panelctl
