# Makes cimhost.registration: awk -f registration.awk cimhost.registration.in merolt.mof > cimhost.registration
#
# Every class of ours that the MOF declares is registered, in the order of the MOF: an association as one, an indication
# as one, and every other class for its instances. A class that stands in cimhost.registration.in is registered as it is
# told there.

function bad(where, what) {
    printf "%s: %s\n", where, what >"/dev/stderr"
    failed = 1
    exit 1
}

# Qualifiers are inherited: what derives from an association is one, whether it says so or not.
function kindsOf(class, superclass, qualifiers) {
    if (qualifiers ~ /[[, ]Indication[], ]/) return "indication"
    if (qualifiers ~ /[[, ]Association[], ]/) return "instance association"
    return (superclass in kinds) ? kinds[superclass] : "instance"
}

# A file's classes, and those of the files that it includes, are written in a paragraph each.
function read(folder, file,    line, words, qualifiers, any) {
    while ((status = (getline line < (folder file))) > 0) {
        if (line ~ /^#pragma include/) {
            split(line, words, "\"")
            read(folder, words[2])
        }
        # What stands in quotation marks is text.
        gsub(/"[^"]*"/, "", line)
        if (line ~ /^\[/) qualifiers = ""
        if (line ~ /^class /) {
            split(line, words, /[ :;{]+/)
            kinds[words[2]] = kindsOf(words[2], words[3], qualifiers)
            qualifiers = ""
            if (words[2] !~ /^Merolt/) continue
            if (!any++) print ""
            print words[2] ": " ((words[2] in told) ? told[words[2]] : kinds[words[2]])
            delete told[words[2]]
        } else {
            qualifiers = qualifiers line " "
        }
    }
    if (status < 0) bad(folder file, "cannot be read")
    close(folder file)
}

BEGIN { inHeading = 1 }

FILENAME ~ /\.mof$/ {
    folder = FILENAME
    sub(/[^\/]*$/, "", folder)
    read(folder, substr(FILENAME, length(folder) + 1))
    exit
}

# The comment at the beginning is the registration's own.
/^[ \t]*$/ { inHeading = 0; next }
/^#/ { if (inHeading) print; next }
{
    if (!(i = index($0, ": "))) bad(FILENAME ":" FNR, "Class: kinds expected")
    class = substr($0, 1, i - 1)
    if (class in told) bad(FILENAME ":" FNR, class " is told twice")
    told[class] = substr($0, i + 2)
}

END {
    if (failed) exit 1
    for (class in told) {
        printf "cimhost.registration.in: no class is declared with the name %s\n", class >"/dev/stderr"
        failed = 1
    }
    exit failed
}
