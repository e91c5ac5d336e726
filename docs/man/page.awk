# Makes a manual page of the public header. Variables: section (3: the functions, 7: conventions, types and
# statuses), version.
#
# The header is a sequence of comments, each followed by what it describes up to the next blank line. A comment
# that begins with a line of capitals is a heading with the text below it.

function escaped(text) {
    gsub(/\\/, "\\e", text)
    gsub(/-/, "\\-", text)
    sub(/^[.']/, "\\\\\\&&", text)
    return text
}

# One line of a comment: a paragraph's, a numbered item's, or an example's, which is set deeper.
function printText(line) {
    if (line == "") {
        ended = 1
        return
    }
    isCode = line ~ /^    /
    isItem = line ~ /^[0-9]\. /
    if (inCode && !isCode)
        print ".EE\n.RE"
    if (isItem)
        print ".IP " substr(line, 1, 2) " 4"
    else if (ended && !(inCode && isCode))
        print ".PP"
    else if (ended)
        print ""
    if (isCode && !inCode)
        print ".RS 4\n.EX"
    inCode = isCode
    ended = 0
    if (isCode)
        line = substr(line, 5)
    else if (isItem)
        line = substr(line, 4)
    else
        sub(/^ +/, "", line)
    print escaped(line)
}

function printComment(first,    i) {
    ended = 1
    for (i = first; i <= lines; i++)
        printText(comment[i])
    if (inCode)
        print ".EE\n.RE"
    inCode = 0
}

function heading(text) {
    return text ~ /^[A-Z][A-Z, ]+$/
}

# The functions begin behind the statuses.
function startPart(title) {
    if (part == "functions" || !(title ~ /^(HANDLES|PLAIN VALUES|ENUMERATIONS|STATUSES)$/))
        part = "functions"
    else
        part = "types"
    wanted = (part == "functions") == (section == 3)
    if (wanted && section == 3 && !functionsBegun++)
        print ".SH FUNCTIONS"
    if (wanted)
        print (section == 3 ? ".SS " : ".SH ") title
}

function printDeclarations(    i) {
    print ".PP\n.EX"
    for (i = 1; i <= declarations; i++)
        print escaped(declaration[i])
    print ".EE"
    if (lines) {
        print ".RS 4"
        printComment(1)
        print ".RE"
    }
}

function endBlock() {
    if (declarations && wanted)
        printDeclarations()
    declarations = 0
    lines = 0
}

function addComment(line) {
    closing = line ~ /\*\/$/
    sub(/^ ?\/?\* ?/, "", line)
    sub(/ ?\*\/$/, "", line)
    if (!(closing && line == ""))
        comment[++lines] = line
    if (!closing)
        return
    inComment = 0
    if (heading(comment[1])) {
        startPart(comment[1])
        if (wanted)
            printComment(2)
        lines = 0
    }
}

BEGIN {
    printf ".TH VANTREL %d \"\" \"Vantrel %s\" \"%s\"\n", section, version,
        section == 3 ? "Library Functions Manual" : "Miscellaneous Information Manual"
    print ".SH NAME"
    if (section == 3) {
        print "vantrel \\- keep records by key\n.SH LIBRARY\nlibvantrelC (\\fI\\-lvantrelC\\fP)"
        print ".SH SYNOPSIS\n.nf\n.B #include <vantrel.h>\n.PP"
        print ".B cc prog.c $(pkg\\-config \\-\\-cflags \\-\\-libs vantrel)\n.fi"
    } else
        print "vantrel \\- conventions, types and statuses of the Vantrel library"
}

# The manual at the top of the file.
FNR == 1 { inManual = 1 }
inManual && / \*\/$/ {
    if (lines && chapter == "EXAMPLE" && section == 3)
        printComment(1)
    lines = 0
    inManual = 0
    next
}
inManual {
    line = $0
    sub(/^ \* ?/, "", line)
    if (FNR == 1 || FNR == 2)
        next
    if (FNR == 3) {
        chapter = "DESCRIPTION"
        print ".SH DESCRIPTION"
    }
    if (heading(line)) {
        if (chapter == "DESCRIPTION" || section == 7)
            printComment(1)
        lines = 0
        chapter = line
        if ((chapter == "EXAMPLE") == (section == 3))
            print ".SH " chapter
        next
    }
    comment[++lines] = line
    next
}

inComment {
    addComment($0)
    next
}
/^\/\* / {
    endBlock()
    inComment = 1
    addComment($0)
    next
}
/^$/ {
    endBlock()
    next
}
/^#|^extern|^}$/ { next }
{
    line = $0
    if (sub(/^VANTREL_API /, "", line))
        indented = 1
    else if (indented && line ~ /^ +/)
        sub(/^ ? ? ? ? ? ? ? ? ? ? ? ?/, "", line)
    else
        indented = 0
    declaration[++declarations] = line
}

END {
    endBlock()
    if (section == 3)
        print ".SH SEE ALSO\n.BR vantrel (7)"
    else
        print ".SH SEE ALSO\n.BR vantrel (3)"
}
