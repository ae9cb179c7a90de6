# Completion of nodal's command line in bash. Commands and options are those that nodal's own help tells, paths what it
# lists.

# Offers the lines of $1 that begin with what is typed, of which readline keeps what it does not take for the word.
_nodal_offer() {
  local line
  while read -r line; do
    [[ $line == "$word"* ]] && COMPREPLY+=("${line#"$kept"}")
  done <<<"$1"
}

# Offers what lies below the path up to its last slash.
_nodal_offer_paths() {
  local parent=/
  [[ $word == */* ]] && parent=${word%/*}/
  compopt -o nospace
  _nodal_offer "$("$program" "${tree[@]}" ls "$parent" 2>/dev/null | while read -r name; do echo "$parent$name"; done)"
}

_nodal() {
  # The line up to the cursor by its blanks alone, but those behind a backslash; bash divides it at colons and equals
  # signs as well.
  local line=${COMP_LINE:0:COMP_POINT} typed i
  read -a typed <<<"$line"
  [[ $line == *[[:blank:]] ]] && typed+=('')
  local last=$((${#typed[@]} - 1))
  local word=${typed[last]#[\"\']}
  local kept=${word%"$2"}

  # The command, where the tree is read from, and an option that the word is the argument of.
  local program=${typed[0]/#~/$HOME} command='' option='' tree=()
  local help=$("$program" --help 2>/dev/null)
  for ((i = 1; i < last; i++)); do
    if [[ -n $option ]]; then
      [[ $option == --cache || $option == --root ]] && tree=("$option" "${typed[i]}")
      option=''
    elif [[ ${typed[i]} == --cache=* || ${typed[i]} == --root=* ]]; then
      tree=("${typed[i]}")
    elif [[ ${typed[i]} == -* ]]; then
      # Behind an option with an argument, the help tells of what kind that is.
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
    -*) compopt -o default ;;  # readline's own completion of files
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
