#include "package.h"

#include <string.h>
#include <strings.h>

#include "report.h"

void storeNumber(uint8_t *bytes, uint32_t number) {
    for (int i = 0; i < 4; i++)
        bytes[i] = (uint8_t)(number >> 8 * i);
}

uint32_t loadNumber(const uint8_t *bytes) {
    uint32_t number = 0;
    for (int i = 0; i < 4; i++)
        number |= (uint32_t)bytes[i] << 8 * i;
    return number;
}

void storeText(char *field, size_t size, const char *text) {
    size_t length = strnlen(text, size - 1);
    memcpy(field, text, length);
    memset(field + length, 0, size - length);
}

NameKey nameKey(const char *name, const char *version) {
    NameKey key = {0};
    storeText(key.name, sizeof key.name, name);
    storeText(key.version, sizeof key.version, version);
    return key;
}

static bool complainOfEntry(const Entry *entry, const char *damage, const char *field) {
    complain("%s: entry %zu (line %zu): %s%s", entry->path, entry->number, entry->line, damage, field);
    return false;
}

/* A line of an entry, "Name: value". */
typedef struct {
    const char *name, *value;
    size_t nameLength, valueLength;
} Line;

static bool isNamed(const Line *line, const char *name) {
    return strlen(name) == line->nameLength && strncasecmp(line->name, name, line->nameLength) == 0;
}

static bool splitLine(Line *line, const char *text, size_t length) {
    const char *colon = memchr(text, ':', length);
    if (colon == NULL || colon == text)
        return false;
    const char *value = colon + 1, *end = text + length;
    while (value < end && (*value == ' ' || *value == '\t'))
        value++;
    while (end > value && (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r'))
        end--;
    *line = (Line){text, value, (size_t)(colon - text), (size_t)(end - value)};
    return true;
}

static bool takeNumber(uint8_t *bytes, const Line *line) {
    uint64_t number = 0;
    for (size_t i = 0; i < line->valueLength; i++) {
        if (line->value[i] < '0' || line->value[i] > '9')
            return false;
        number = number * 10 + (uint64_t)(line->value[i] - '0');
        if (number > UINT32_MAX)
            return false;
    }
    storeNumber(bytes, (uint32_t)number);
    return line->valueLength > 0;
}

static bool takeText(char *field, size_t size, const Line *line) {
    if (line->valueLength >= size)
        return false;
    memcpy(field, line->value, line->valueLength);
    memset(field + line->valueLength, 0, size - line->valueLength);
    return true;
}

static bool takeField(PackageFields *fields, const Line *line, const Entry *entry) {
    struct {
        const char *name;
        char *field;
        size_t size;
    } texts[] = {{"Package", fields->name, sizeof fields->name},
                 {"Version", fields->version, sizeof fields->version},
                 {"Section", fields->section, sizeof fields->section},
                 {"Maintainer", fields->maintainer, sizeof fields->maintainer}};
    for (size_t i = 0; i < sizeof texts / sizeof *texts; i++)
        if (isNamed(line, texts[i].name))
            return takeText(texts[i].field, texts[i].size, line) ||
                   complainOfEntry(entry, "too long: ", texts[i].name);
    if (isNamed(line, "Installed-Size"))
        return takeNumber(fields->installedSize, line) ||
               complainOfEntry(entry, "no number: ", "Installed-Size");
    if (isNamed(line, "Size"))
        return takeNumber(fields->packedSize, line) || complainOfEntry(entry, "no number: ", "Size");
    return true;
}

bool parsePackage(PackageFields *fields, const Entry *entry) {
    memset(fields, 0, sizeof *fields);
    if (memchr(entry->text, 0, entry->length) != NULL)
        return complainOfEntry(entry, "not a text", "");
    const char *end = entry->text + entry->length, *next;
    for (const char *start = entry->text; start < end; start = next + 1) {
        next = memchr(start, '\n', (size_t)(end - start));
        if (next == NULL)
            next = end;
        if (*start == ' ' || *start == '\t') /* goes on with the field before */
            continue;
        Line line;
        if (!splitLine(&line, start, (size_t)(next - start)))
            return complainOfEntry(entry, "a line without a field", "");
        if (!takeField(fields, &line, entry))
            return false;
    }
    if (fields->name[0] == 0)
        return complainOfEntry(entry, "missing: ", "Package");
    if (fields->version[0] == 0)
        return complainOfEntry(entry, "missing: ", "Version");
    return true;
}
