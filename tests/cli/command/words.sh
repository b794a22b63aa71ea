#!/bin/bash
# The man page and the bash completion know the commands and options that the tool's own help lists, and no others.
# usage: words.sh TOOL SOURCE_FOLDER
set -eu
tool="$1"
completion="$2/cli/command/completion.bash"
page="$2/docs/vintrel.1"

# In the help a line of each begins with two blanks: "  -o,--output FILE   ...", "  render   ...".
CommandsOfHelp() { "$tool" --help | sed -nE '/^Subcommands:/,$s/^  ([a-z]+) .*/\1/p'; }
OptionsOfHelp() { "$tool" "$@" --help | sed -nE 's/^  (-[^ ]+).*/\1/p' | tr , '\n'; }

# What may follow what has been typed so far.
# shellcheck source=/dev/null
source "$completion"
Completions() {
  COMP_LINE="$*" COMP_POINT=${#COMP_LINE}
  _vintrel "$tool"
  printf '%s\n' "${COMPREPLY[@]}"
}

# In the page ".It Fl o , -output Ar file" stands for -o and --output, ".It Cm render" for a command.
CommandsOfPage() { sed -nE '/^\.Sh DESCRIPTION/,/^\.Ss/s/^\.It Cm ([a-z]+).*/\1/p' "$page"; }
OptionsOfPage() {
  sed -nE 's/^\.It Fl ([a-z]) , (-[a-z-]+).*/-\1\n-\2/p; t; s/^\.It Fl (-[a-z-]+).*/-\1/p' "$page"
}

failed=0
ExpectSame() {
  local difference
  if ! difference=$(diff <(sort -u <<<"$2") <(sort -u <<<"$3")); then
    echo "$1 (<) and the help (>) differ:" >&2
    grep '^[<>]' <<<"$difference" >&2
    failed=1
  fi
}

commands=$(CommandsOfHelp)
every=$(OptionsOfHelp)
[ "$(wc -w <<<"$commands")" -ge 6 ] || { echo "the help lists no commands that this test can read" >&2 && exit 1; }
ExpectSame "completion" "$(Completions 'vintrel ' | grep -v '^-')" "$commands"
ExpectSame "completion of no command" "$(Completions 'vintrel -')" "$every"
ExpectSame "man page" "$(CommandsOfPage)" "$commands"
for command in $commands; do
  options=$(OptionsOfHelp "$command")
  ExpectSame "completion of $command" "$(Completions "vintrel $command -")" "$options"
  every+=$'\n'$options
done
ExpectSame "man page" "$(OptionsOfPage)" "$every"
exit $failed
