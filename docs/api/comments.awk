# Adds to the public header the comments that doxygen reads, made of its plain ones; line numbers stay.
#
# A comment describes every declaration below it up to the next blank line, so it is repeated for each. An
# enumerator whose name says it all is given its value as description.

# The comment's text of one line, with paragraphs kept apart.
function add(line) {
    sub(/^ ?\/?\* ?/, "", line)
    sub(/ ?\*\/$/, "", line)
    comment = comment (line == "" ? "<p>" : line " ")
}

# The manual at the top of the file becomes the description of the file.
NR == 1 {
    print "/** @file"
    inFileComment = 1
    next
}
inFileComment {
    if (NR == 3)
        print " * @verbatim"
    else if ($0 == " */") {
        print " * @endverbatim */"
        inFileComment = 0
    } else
        print
    next
}

/^\/\* / {
    comment = ""
    inComment = 1
}
inComment {
    add($0)
    inComment = $0 !~ /\*\/$/
    print
    next
}

/^$/ { comment = "" }

# What stands in front of a declaration, unless a comment stands behind it.
/^(VANTREL_API|typedef|enum) ?/ && !/\/\* / && comment != "" { $0 = "/** " comment "*/ " $0 }

/; +\/\* |^    VANTREL_[A-Z0-9_]+ = .*\/\* / { sub(/\/\* /, "/**< ") }

/^    VANTREL_[A-Z0-9_]+ = / && !/\/\*/ {
    value = $0
    sub(/.*= /, "", value)
    sub(/,$/, "", value)
    $0 = $0 " /**< " value " */"
}

{ print }
