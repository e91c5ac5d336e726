/* A first program: makes a file, inserts a record and reads it back. */
#include <stdio.h>
#include <string.h>
#include <vantrel.h>

static int check(const char *what, VantrelStatus status) {
    if (status != VANTREL_STATUS_NO_ERROR)
        fprintf(stderr, "%s: %s\n", what, VantrelStatusCodeToString(status));
    return status != VANTREL_STATUS_NO_ERROR;
}

int main(int count, char **arguments) {
    VantrelClient *client;
    VantrelFile *file;
    VantrelFileAttributes *attributes;
    VantrelIndexAttributes *index;
    VantrelKeySegment *segment;
    char key[4] = {7, 0, 0, 0}, record[12], sprocket[] = "\7\0\0\0sprocket";
    const char *name = count > 1 ? arguments[1] : "parts.vnt";

    if (check("client", VantrelClientAllocate(&client, 0, 0)) ||
        check("file attributes", VantrelFileAttributesAllocate(&attributes)) ||
        check("record length", VantrelFileAttributesSetFixedRecordLength(attributes, sizeof record)) ||
        check("key segment", VantrelKeySegmentAllocate(&segment)) ||
        check("field", VantrelKeySegmentSetField(segment, 0, 4, VANTREL_DATA_TYPE_UNSIGNED_BINARY)) ||
        check("index attributes", VantrelIndexAttributesAllocate(&index)) ||
        check("add segment", VantrelIndexAttributesAddKeySegment(index, segment)) ||
        check("create",
              VantrelClientFileCreate(client, attributes, index, name, VANTREL_CREATE_MODE_OVERWRITE,
                                      VANTREL_LOCATION_MODE_DEFAULT)) ||
        check("open", VantrelClientFileOpen(client, &file, name, NULL, VANTREL_OPEN_MODE_NORMAL,
                                            VANTREL_OPEN_VARIANT_DEFAULT)) ||
        check("insert", VantrelFileRecordCreate(file, sprocket, sizeof record)))
        return 1;
    if (VantrelFileRecordRetrieve(file, VANTREL_COMPARISON_EQUAL, 0, key, sizeof key, record, sizeof record,
                                  VANTREL_LOCK_MODE_NONE) != 12 ||
        memcmp(record + 4, "sprocket", 8) != 0)
        return !check("read", VantrelFileGetLastStatusCode(file));
    printf("%.8s\n", record + 4);
    VantrelKeySegmentFree(segment);
    VantrelIndexAttributesFree(index);
    VantrelFileAttributesFree(attributes);
    if (check("close", VantrelClientFileClose(client, file)))
        return 1;
    return VantrelClientFree(client);
}
