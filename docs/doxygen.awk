# Headers carry plain comments, which read well in an editor. This turns them into Doxygen's:
#   the first comment, and a section's    text of the file
#   a comment in front of declarations    text of each up to the next blank line; in a class, of the first
#   a comment behind a declaration        text of that one
function close_group() {
    if (in_group)
        print "/**@}*/"
    in_group = 0
}

# Indented lines of a comment are a table: they are shown as they stand.
function show(first,    i, line, indented, verbatim) {
    print first
    for (i = 1; i <= n; ++i) {
        line = text[i]
        indented = line ~ /^ *\*   +[^ ]/
        if (indented && !verbatim)
            print " * @verbatim"
        if (!indented && verbatim)
            print " * @endverbatim"
        verbatim = indented
        if (indented)
            sub(/^ \*/, "", line)
        print line
    }
    print verbatim ? " * @endverbatim */" : " */"
}

# Text of the comment in lines without its marks; n counts them.
function read_comment(line,    last) {
    n = 0
    sub(/^ *\/\* ?/, " * ", line)
    for (;;) {
        last = sub(/ *\*\/ *$/, "", line)
        sub(/^ *\*/, " *", line)
        text[++n] = line
        if (last || (getline line) <= 0)
            break
    }
}

FNR == 1 && /^\/\* qmml\// {
    sub(/^\/\* /, "")
    name = $0
    sub(/:.*/, "", name)
    sub(/^[^:]*: */, "")
    read_comment("/* " $0)
    show("/** @file " name)
    next
}
/^ *\/\*[^*]/ && !/\*\/ *[^ ]/ {
    close_group()
    read_comment($0)
    more = (getline following) > 0
    if (!more || following ~ /^ *$/ || following ~ /^ *#/ || text[1] ~ /----/) {
        if (text[1] ~ /----/) {
            gsub(/ *----* */, "", text[1])
            sub(/^ *\* */, " * @par ", text[1])
            show("/** @file")
        } else if (n > 1)
            show("/** @file")
    } else {
        if (following ~ /^[^ ].*[;,] *(\/\*.*\*\/)? *$/ && following !~ /{/) {
            print "/**@{*/"
            in_group = 1
        }
        show("/**")
    }
    $0 = more ? following : ""
}
/^ *$/ || /^ *[}#]/ || /_END_C/ { close_group() }
/[;,] +\/\* .*\*\/ *$/ { match($0, /\/\* .*\*\/ *$/); $0 = substr($0, 1, RSTART - 1) "/**< " substr($0, RSTART + 3) }
{ print }
END { close_group() }
