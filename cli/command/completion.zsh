#compdef vintrel
# Zsh completion of vintrel: commands, options, and their values.  The names of presets and parameters come from
# the tool itself.

_vintrel_presets() {
  local -a found=(${(f)"$($tool presets 2>/dev/null | awk '{ print $1 }')"})
  compadd -a found
  _files -g '*.toml'
}

# The lines of `vintrel params` through an awk program.
_vintrel_params() {
  print -r -- "$($tool params 2>/dev/null | awk -F '  +' "NR > 1 { $1 }")"
}

_vintrel_set() {
  local -a found
  if [[ $PREFIX == *=* ]]; then
    found=(${(f)"$(_vintrel_params '
      if ($4 == "checkbox") print $3 "=on\n" $3 "=off"
      if ($4 == "popup") { gsub(" or ", "\n" $3 "=", $5); print $3 "=" $5 }')"})
    compadd -a found
  else
    found=(${(f)"$(_vintrel_params 'print $3')"})
    compadd -S = -a found
  fi
}

_vintrel_key() {
  local -a found=(${(f)"$(_vintrel_params 'if ($7 ~ /^yes/) print $3')"})
  compadd -S @ -a found
}

_vintrel() {
  local -a commands=(
    'render:draw snow on a picture, a sequence or a video'
    'sheet:render a few frames of a shot into one picture'
    'panel:set the snow in a page of the browser'
    'info:say what the tool sees in a file'
    'presets:list the looks that --preset takes'
    'params:list the parameters that --set takes'
    'check:try an effect module in a host that lies'
    'about:say what the effect says about itself'
  )
  local -a help=('(-h --help)'{-h,--help}'[print help]')
  local -a shot=(
    '(-i --input)'{-i,--input}'[the input]:file:_files'
    '(-o --output)'{-o,--output}'[what to write]:file:_files'
    '--blank[a transparent input of this size]:size:(1280x720 1920x1080 3840x2160)'
    '--scene[take all of it from a scene file]:scene:_files -g "*.toml"'
    '--preset[begin with a look]:preset:_vintrel_presets'
    '*--set[set a parameter]:parameter:_vintrel_set'
    '*--key[keys of a parameter]:parameter:_vintrel_key'
    '--seed[another arrangement of flakes]:number:'
    '--only-snow[snow alone, on a transparent background]'
    '--frames[the frames to render]:list:'
    '(-r --fps)'{-r,--fps}'[frames a second]:rate:(23.976 24 25 29.97 30 50 59.94 60)'
    '--retime[of video: the picture shown at each moment]'
    '--shutter[motion blur]:degrees:'
    '--depth[what to render in]:depth:(8 16 half float)'
    '--alpha[alpha of video]:kind:(straight premultiplied)'
    '--compression[of pictures]:name:(none rle zip zips packbits lzw piz pxr24 b44 b44a dwaa dwab)'
    '--quality[of JPEG and video]:number:'
    '--proxy[render at 1/N of the size]:divisor:(2 4)'
    "--pixel-aspect[a pixel's width over its height]:ratio:"
    '--jobs[frames at the same time]:number:'
    '--missing[for gaps in a sequence]:policy:(error skip black)'
    '--keep-going[go on after a frame that fails]'
    '--no-overwrite[refuse to replace files]'
    '(-y --overwrite)'{-y,--overwrite}'[replace files]'
    '--progress[for people or programs]:how:(text json)'
    '(-q --quiet)'{-q,--quiet}'[no progress, no closing line]'
  )
  local -a render=(
    '--codec[of video]:codec:(h264 hevc prores ffv1)'
    '--sound[of video]:how:(auto copy aac none)'
    '--part[one share of the frames]:share:'
    '--resume[leave out frames that are done]'
    '--save-scene[write down what was asked for]:scene:_files -g "*.toml"'
    '--dry-run[print the scene and the plan]'
  )
  if ((CURRENT == 2)); then
    if [[ $PREFIX == -* ]]; then
      _arguments $help '--version[print the version]'
    else
      _describe command commands
    fi
    return
  fi
  local tool=${words[1]/#\~/$HOME} command=$words[2]
  # The options of a command stand after its name.
  shift words
  ((CURRENT--))
  case $command in
    render) _arguments -s $help $shot $render '1:input:_files' '2:output:_files' ;;
    sheet) _arguments -s $help $shot '--count[pictures on the sheet]:number:' '1:input:_files' '2:output:_files' ;;
    panel)
      _arguments $help '--scene[begin with a scene file]:scene:_files -g "*.toml"' \
        '--no-browser[say the address, and open nothing]' '--port[port of 127.0.0.1]:port:' '1:input:_files'
      ;;
    info) _arguments $help '--json[as one JSON object]' '1:file:_files' ;;
    check)
      _arguments $help '--levels[which levels]:list:' '--seed[of all that is random]:number:' \
        '--quick[fewer random tries]' '*--against[a build to compare with]:module:_files' \
        '--jobs[levels at the same time]:number:' '--json[as one JSON object]' '1:module:_files'
      ;;
    *) _arguments $help ;;
  esac
}

[[ $funcstack[1] != _vintrel ]] || _vintrel "$@"
