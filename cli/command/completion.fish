# Fish completion of vintrel: commands, options, and their values.  The names of presets and parameters come from
# the tool itself.

complete -c vintrel -f
complete -c vintrel -s h -l help -d 'Print help'
complete -c vintrel -n __fish_use_subcommand -l version -d 'Print the version'
complete -c vintrel -n __fish_use_subcommand -a render -d 'Draw snow on a picture, a sequence or a video'
complete -c vintrel -n __fish_use_subcommand -a sheet -d 'Render a few frames of a shot into one picture'
complete -c vintrel -n __fish_use_subcommand -a panel -d 'Set the snow in a page of the browser'
complete -c vintrel -n __fish_use_subcommand -a info -d 'Say what the tool sees in a file'
complete -c vintrel -n __fish_use_subcommand -a presets -d 'List the looks that --preset takes'
complete -c vintrel -n __fish_use_subcommand -a params -d 'List the parameters that --set takes'
complete -c vintrel -n __fish_use_subcommand -a check -d 'Try an effect module in a host that lies'
complete -c vintrel -n __fish_use_subcommand -a about -d 'Say what the effect says about itself'

function __vintrel_set
    vintrel params 2>/dev/null | awk -F '  +' 'NR > 1 { print $3 "=" }
        NR > 1 && $4 == "checkbox" { print $3 "=on\n" $3 "=off" }
        NR > 1 && $4 == "popup" { gsub(" or ", "\n" $3 "=", $5); print $3 "=" $5 }'
end

function __vintrel_key
    vintrel params 2>/dev/null | awk -F '  +' 'NR > 1 && $7 ~ /^yes/ { print $3 "@" }'
end

set -l files '__fish_seen_subcommand_from render sheet panel info check'
set -l shot '__fish_seen_subcommand_from render sheet'
set -l render '__fish_seen_subcommand_from render'
complete -c vintrel -n $files -F
complete -c vintrel -n $shot -s i -l input -r -F -d 'The input'
complete -c vintrel -n $shot -s o -l output -r -F -d 'What to write'
complete -c vintrel -n $shot -l blank -x -a '1280x720 1920x1080 3840x2160' -d 'A transparent input of this size'
complete -c vintrel -n $shot -l scene -r -F -d 'Take all of it from a scene file'
complete -c vintrel -n $shot -l preset -r -F -a "(vintrel presets 2>/dev/null | awk '{ print \$1 }')" -d 'A look'
complete -c vintrel -n $shot -l set -x -a '(__vintrel_set)' -d 'Set a parameter'
complete -c vintrel -n $shot -l key -x -a '(__vintrel_key)' -d 'Keys of a parameter'
complete -c vintrel -n $shot -l seed -x -d 'Another arrangement of flakes'
complete -c vintrel -n $shot -l only-snow -d 'Snow alone, on a transparent background'
complete -c vintrel -n $shot -l frames -x -d 'The frames to render'
complete -c vintrel -n $shot -s r -l fps -x -a '23.976 24 25 29.97 30 50 59.94 60' -d 'Frames a second'
complete -c vintrel -n $shot -l shutter -x -d 'Motion blur'
complete -c vintrel -n $shot -l depth -x -a '8 16 half float' -d 'What to render in'
complete -c vintrel -n $shot -l alpha -x -a 'straight premultiplied' -d 'Alpha of video'
complete -c vintrel -n $shot -l compression -x -a 'none rle zip zips packbits lzw piz pxr24 b44 b44a dwaa dwab' \
    -d 'Of pictures'
complete -c vintrel -n $render -l codec -x -a 'h264 hevc prores ffv1' -d 'Of video'
complete -c vintrel -n $shot -l quality -x -d 'Of JPEG and video'
complete -c vintrel -n $render -l sound -x -a 'auto copy aac none' -d 'Of video'
complete -c vintrel -n $shot -l retime -d 'Of video: the picture shown at each moment'
complete -c vintrel -n $shot -l proxy -x -a '2 4' -d 'Render at 1/N of the size'
complete -c vintrel -n $shot -l pixel-aspect -x -d 'A pixel\'s width over its height'
complete -c vintrel -n $shot -l jobs -x -d 'Frames at the same time'
complete -c vintrel -n $shot -l missing -x -a 'error skip black' -d 'For gaps in a sequence'
complete -c vintrel -n $shot -s q -l quiet -d 'No progress, no closing line'
complete -c vintrel -n $render -l part -x -d 'One share of the frames'
complete -c vintrel -n $render -l resume -d 'Leave out frames that are done'
complete -c vintrel -n $shot -l keep-going -d 'Go on after a frame that fails'
complete -c vintrel -n $shot -l no-overwrite -d 'Refuse to replace files'
complete -c vintrel -n $shot -s y -l overwrite -d 'Replace files'
complete -c vintrel -n $shot -l progress -x -a 'text json' -d 'For people or programs'
complete -c vintrel -n $render -l save-scene -r -F -d 'Write down what was asked for'
complete -c vintrel -n $render -l dry-run -d 'Print the scene and the plan'
complete -c vintrel -n '__fish_seen_subcommand_from sheet' -l count -x -d 'Pictures on the sheet'
set -l panel '__fish_seen_subcommand_from panel'
complete -c vintrel -n $panel -l scene -r -F -d 'Begin with a scene file'
complete -c vintrel -n $panel -l no-browser -d 'Say the address, and open nothing'
complete -c vintrel -n $panel -l port -x -d 'Port of 127.0.0.1'
complete -c vintrel -n '__fish_seen_subcommand_from info check' -l json -d 'As one JSON object'
set -l check '__fish_seen_subcommand_from check'
complete -c vintrel -n $check -l levels -x -d 'Which levels'
complete -c vintrel -n $check -l seed -x -d 'Of all that is random'
complete -c vintrel -n $check -l quick -d 'Fewer random tries'
complete -c vintrel -n $check -l against -r -F -d 'A build to compare with'
complete -c vintrel -n $check -l jobs -x -d 'Levels at the same time'
