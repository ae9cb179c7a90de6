# bash completion for nodal. Commands and options come from nodal --help, paths from nodal ls.

# Suggests the lines of $1 that start with the typed word, without the part that readline keeps.
_nodal_offer() {
  local line
  while read -r line; do
    [[ $line == "$word"* ]] && COMPREPLY+=("${line#"$kept"}")
  done <<<"$1"
}

# Suggests the entries below the typed path.
_nodal_offer_paths() {
  local parent=/
  [[ $word == */* ]] && parent=${word%/*}/
  compopt -o nospace
  _nodal_offer "$("$program" "${tree[@]}" ls "$parent" 2>/dev/null | while read -r name; do echo "$parent$name"; done)"
}

_nodal() {
  # Split the line up to the cursor at unescaped blanks only; bash also splits it at colons and equals signs.
  local line=${COMP_LINE:0:COMP_POINT} typed i
  read -a typed <<<"$line"
  [[ $line == *[[:blank:]] ]] && typed+=('')
  local last=$((${#typed[@]} - 1))
  local word=${typed[last]#[\"\']}
  local kept=${word%"$2"}

  # Find the command, the source of the tree, and the option whose argument is being completed.
  local program=${typed[0]/#~/$HOME} command='' option='' tree=()
  local help=$("$program" --help 2>/dev/null)
  for ((i = 1; i < last; i++)); do
    if [[ -n $option ]]; then
      [[ $option == --cache || $option == --root ]] && tree=("$option" "${typed[i]}")
      option=''
    elif [[ ${typed[i]} == --cache=* || ${typed[i]} == --root=* ]]; then
      tree=("${typed[i]}")
    elif [[ ${typed[i]} == -* ]]; then
      # In the help, an option with an argument is followed by the type of the argument.
      [[ $help =~ ($'\n  '|,)"${typed[i]}"(,[^ ]*)?' '[A-Z][A-Z] ]] && option=${typed[i]}
    elif [[ -z $command ]]; then
      command=${typed[i]}
      help+=$'\n'$("$program" "$command" --help 2>/dev/null)
    fi
  done

  COMPREPLY=()
  case $option in
    --only) _nodal_offer_paths ;;
    --key) ;;
    -*) compopt -o default ;;  # complete file names
    *)
      if [[ $word == --*=* ]]; then
        compopt -o default
      elif [[ $word == -* ]]; then
        _nodal_offer "$(sed -n 's/^  \(-[^ ]*\).*/\1/p' <<<"$help" | tr , '\n')"
      elif [[ -z $command ]]; then
        _nodal_offer "$(sed '1,/^Commands:/d' <<<"$help" | sed -n 's/^  \([a-z][^ ]*\) .*/\1/p')"
      elif [[ $help == *$'\n  path '* ]]; then
        _nodal_offer_paths
      else
        compopt -o default
      fi
      ;;
  esac
}

complete -F _nodal nodal
