# Completion for selvane-cli in bash: commands, options, their values, and files. Needs nothing but bash 4.

# Fills COMPREPLY with folders and with files that match a pattern; every file when there is no pattern.
_selvane_cli_files() {
  local cur=$1 pattern=${2-}
  # Names with blanks are quoted and folders get a slash. Fails where the shell is not completing.
  compopt -o filenames 2>/dev/null
  if [[ -n $pattern ]]; then
    mapfile -t COMPREPLY < <(compgen -f -X "!$pattern" -- "$cur"; compgen -d -- "$cur")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
  fi
}

_selvane_cli_measures='count support confidence coverage lift leverage conviction cosine jaccard kulczynski
  odds_ratio odds_low odds_high phi certainty imbalance information_gain chi_squared p standardised_lift
  dependency surprise'

_selvane_cli_words() {
  mapfile -t COMPREPLY < <(compgen -W "$2" -- "$1")
}

# Completes the value of an option; false for an option that takes none.
_selvane_cli_value() {
  local option=$1 cur=$2
  if [[ ${COMP_WORDS[1]-} == terms && $option == --terms ]]; then # a number, not a database
    _selvane_cli_words "$cur" all
    return
  fi
  case $option in
    --taxonomy | --output | --terms) _selvane_cli_files "$cur" '*.mdb' ;;
    --itemsets | --supplementary) _selvane_cli_files "$cur" ;;
    --format) _selvane_cli_words "$cur" 'text csv json' ;;
    --sort)
      if [[ ${COMP_WORDS[2]-} == filter ]]; then
        _selvane_cli_words "$cur" "$_selvane_cli_measures"
      else
        _selvane_cli_words "$cur" "index pa pc $_selvane_cli_measures"
      fi
      ;;
    --measures) # a list: the last name of it
      local before=''
      [[ $cur == *,* ]] && before=${cur%,*},
      mapfile -t COMPREPLY < <(compgen -P "$before" -W "all $_selvane_cli_measures" -- "${cur##*,}")
      ;;
    --by) _selvane_cli_words "$cur" "$_selvane_cli_measures" ;;
    --items) _selvane_cli_words "$cur" 'positions terms' ;;
    --witnesses) _selvane_cli_words "$cur" 'any distinct' ;;
    --correction) _selvane_cli_words "$cur" 'holm bh bonferroni none' ;;
    --keep) _selvane_cli_words "$cur" 'first strongest' ;;
    --viewpoint) _selvane_cli_words "$cur" 'dependency surprise' ;;
    --behaviour) _selvane_cli_words "$cur" 'standard rare' ;;
    --order) _selvane_cli_words "$cur" 'support confidence' ;;
    --pmml-version) _selvane_cli_words "$cur" '1.1 4.4' ;;
    --on) _selvane_cli_words "$cur" 'antecedent consequent' ;;
    --form) _selvane_cli_words "$cur" 'rows sets' ;;
    --under | --depth | --table | --min-support | --min-confidence | --limit | --threshold | --clusters | \
      --inclusive | --restrictive | --ground | --min-rows | --leave-out | --from | --to | --with | --without | \
      --rule | --max-size | --antecedent | --consequent | --min-lift | --improvement | --significant | \
      --specific | --interesting | --where) ;;
    *) return 1 ;;
  esac
}

_selvane_cli() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev='' word options='' i
  COMPREPLY=()
  ((COMP_CWORD > 0)) && prev=${COMP_WORDS[COMP_CWORD - 1]}

  # The value of an option: behind a blank, or behind "=", which the shell takes as a word of its own.
  if [[ $cur == '=' ]]; then
    _selvane_cli_value "$prev" '' && return
  elif [[ $prev == '=' ]] && ((COMP_CWORD > 1)); then
    _selvane_cli_value "${COMP_WORDS[COMP_CWORD - 2]}" "$cur" && return
  elif _selvane_cli_value "$prev" "$cur"; then
    return
  fi

  # What stands before: the group, the command (two words for a filter) and how many arguments that are no
  # options.
  local group='' command='' arguments=0
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      --taxonomy | --output | --terms | --itemsets | --format | --sort | --under | --depth | --table | \
        --limit | --min-support | --min-confidence | --viewpoint | --behaviour | --threshold | --order | \
        --on | --clusters | --inclusive | --restrictive | --ground | --pmml-version | --supplementary | --form | --min-rows | --leave-out | \
        --from | --to | --with | --without | --rule | --measures | --where | --by | --items | --witnesses | \
        --correction | --keep | --max-size | --antecedent | --consequent | --min-lift | --improvement | \
        --significant | --specific | --interesting)
        [[ ${COMP_WORDS[i + 1]-} == '=' ]] && ((++i))
        ((++i))
        ;;
      -*) ;;
      *)
        if [[ -z $group ]]; then
          group=$word
        elif [[ -z $command ]]; then
          command=$word
        elif [[ "$group $command" == 'rules filter' ]]; then
          command+=" $word"
        else
          ((++arguments))
        fi
        ;;
    esac
  done

  case "$group $command" in
    ' ') options='--help --version' ;;
    'taxonomy load') options='--supplementary --check-tags --help' ;;
    'taxonomy find') options='--format --no-guard --help' ;;
    'taxonomy list') options='--source --under --depth --help' ;;
    'taxonomy prune') options='--upward --help' ;;
    'terms build')
      options='--taxonomy --output --terms --min-rows --leave-out --major --from --to --form --help'
      ;;
    'terms documents') options='--table --with --without --format --no-guard --help' ;;
    'terms list') options='--table --help' ;;
    'rules extract')
      options='--taxonomy --output --overwrite --table --min-support --min-confidence --no-generalize --closed --unreduced
               --itemsets --readable --items --witnesses --max-size --antecedent --consequent --leave-out --min-lift
               --improvement --significant --correction --specific --interesting --shortest --no-shortest --keep --by
               --help'
      ;;
    'rules show') options='--taxonomy --table --format --no-guard --measures --where --sort --limit --help' ;;
    'rules documents')
      options='--taxonomy --terms --rule --table --exceptions --format --no-guard --help'
      ;;
    'rules filter rating')
      options='--taxonomy --table --viewpoint --threshold --behaviour --format --no-guard --save --help'
      ;;
    'rules filter template')
      options='--taxonomy --table --inclusive --restrictive --order --format --no-guard --save --help'
      ;;
    'rules filter specificity')
      options='--taxonomy --table --ground --on --order --depth --format --no-guard --save --help'
      ;;
    'rules filter cover') options='--taxonomy --terms --table --clusters --format --no-guard --save --help' ;;
    'rules filter measures')
      options='--taxonomy --table --where --sort --measures --format --no-guard --save --help'
      ;;
    'pmml export') options='--taxonomy --output --table --pmml-version --overwrite --help' ;;
    'pmml import') options='--taxonomy --output --rules --help' ;;
    *) options='--help' ;;
  esac
  if [[ $cur == -* ]]; then
    _selvane_cli_words "$cur" "$options"
    return
  fi

  case "$group $command" in
    ' ') _selvane_cli_words "$cur" 'taxonomy terms rules pmml tabulate' ;;
    'taxonomy ') _selvane_cli_words "$cur" 'load find list prune restore' ;;
    'terms ') _selvane_cli_words "$cur" 'build list documents' ;;
    'rules ') _selvane_cli_words "$cur" 'extract list show filter documents' ;;
    'pmml ') _selvane_cli_words "$cur" 'export import' ;;
    'rules filter') _selvane_cli_words "$cur" 'rating template specificity cover measures' ;;
    'pmml import')
      if ((arguments == 0)); then
        _selvane_cli_files "$cur" '*.[xX][mM][lL]'
      else
        _selvane_cli_words "$cur" "$options"
      fi
      ;;
    'taxonomy load')
      case $arguments in
        0) _selvane_cli_files "$cur" ;; # known by their content
        1) _selvane_cli_files "$cur" '*.mdb' ;;
        *) _selvane_cli_words "$cur" "$options" ;;
      esac
      ;;
    'tabulate '*) # up to three files; the first of them counts as the command
      if ((arguments < 2)); then
        _selvane_cli_files "$cur"
      else
        _selvane_cli_words "$cur" "$options"
      fi
      ;;
    'terms build') _selvane_cli_files "$cur" ;;
    'taxonomy find' | 'taxonomy list' | 'taxonomy prune' | 'taxonomy restore' | 'terms list' | 'terms documents' | 'rules extract' | 'rules list' | \
      'rules show' | 'rules documents' | 'rules filter '* | 'pmml export')
      if ((arguments == 0)); then
        _selvane_cli_files "$cur" '*.mdb'
      elif [[ $command != prune && $command != find ]]; then # what follows there are codes or a text
        _selvane_cli_words "$cur" "$options"
      fi
      ;;
  esac
}

complete -F _selvane_cli selvane-cli
