# Completion of nodal's command line in fish. Commands and options are those that nodal's own help tells, paths what it
# lists.

# Prints what lies below a path up to its last slash: the program, the path, and the options that tell the tree.
function __nodal_paths
    set -l parent (string match -r '.*/' -- $argv[2]; or echo /)
    string replace -r '^' -- $parent ($argv[1] $argv[3..-1] ls $parent 2>/dev/null)
end

function __nodal_complete
    set -l word (commandline -ct)
    set -l tokens (commandline -opc)
    set -l program $tokens[1]

    # The command, where the tree is read from, and an option that the word is the argument of.
    set -l help ($program --help 2>/dev/null)
    set -l command ''
    set -l option ''
    set -l tree
    for token in $tokens[2..-1]
        if test -n "$option"
            contains -- $option --cache --root
            and set tree $option $token
            set option ''
        else if string match -qr -- '^--(cache|root)=' $token
            set tree $token
        else if string match -q -- '-*' $token
            # Behind an option with an argument, the help tells of what kind that is.
            string match -qr -- "^  (-[^ ]*,)?$token(,[^ ]*)? [A-Z][A-Z]" $help
            and set option $token
        else if test -z "$command"
            set command $token
            set -a help ($program $command --help 2>/dev/null)
        end
    end

    switch "$option"
        case --only
            __nodal_paths $program "$word" $tree
        case --key
        case '-*'
            __fish_complete_path $word
        case '*'
            if set -l parts (string match -rg -- '^(--[^=]+=)(.*)' $word)
                string replace -r '^' -- $parts[1] (__fish_complete_path $parts[2])
            else if string match -q -- '-*' $word
                string match -rg -- '^  (-[^ ]*)' $help | string split ,
            else if test -z "$command"
                string replace -rf -- '^  ([a-z][^ ]*) +(.*)' '$1\t$2' $help
            else if string match -q -- '  path *' $help
                __nodal_paths $program "$word" $tree
            else
                __fish_complete_path $word
            end
    end
end

complete -c nodal -f -a '(__nodal_complete)'
