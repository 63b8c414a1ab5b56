# fish completion for panelctl(1)

set -l commands discover ping touchback trigger upload touches doctor

complete -c panelctl -f

complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a discover -d 'List the panels that announce themselves'
complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a ping -d 'Send one heartbeat and print the answer'
complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a touchback -d 'Start or stop sending touches to this computer'
complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a trigger -d 'Ask the panel to open its casting receiver'
complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a upload -d 'Send a file to the panel'
complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a touches -d 'Print the touches that arrive, until interrupted'
complete -c panelctl -n "not __fish_seen_subcommand_from $commands" -a doctor -d 'Diagnose connection problems between this computer and a panel'

complete -c panelctl -n '__fish_seen_subcommand_from discover' -l seconds -x -d 'Search for N seconds'
complete -c panelctl -n '__fish_seen_subcommand_from touchback' -a 'on off'
complete -c panelctl -n '__fish_seen_subcommand_from touchback' -l hdmi -d 'The picture comes over a cable'
complete -c panelctl -n '__fish_seen_subcommand_from upload' -F
complete -c panelctl -n '__fish_seen_subcommand_from touches' -l record -r -F -d 'Also record them to a file'
complete -c panelctl -n '__fish_seen_subcommand_from touches' -l max-size -x -d 'Stop recording at this size'
complete -c panelctl -n '__fish_seen_subcommand_from doctor' -l touches -d 'Also wait for a touch'

complete -c panelctl -l panel-address -x -d 'The address of the panel'
complete -c panelctl -l panel -x -d 'The name of the panel'
complete -c panelctl -l interface -x -a '(command ls /sys/class/net 2>/dev/null)' -d 'Tell the panel the address of this network interface'
complete -c panelctl -l timeout -x -d 'Seconds to wait'
complete -c panelctl -l json -d 'Machine-readable output'
complete -c panelctl -l verbose -d 'Log diagnostics to standard error'
complete -c panelctl -l version -d 'Print the version'
complete -c panelctl -l help -d 'Print a short help'
