/*
 * Vantrel: keyed record files behind a flat C interface.
 *
 * A file holds records of fixed or variable length. Indexes, defined over fields of the record, give the
 * orders in which records are found and read. Programs work on opaque handles, and every request is handed
 * to a record-manager engine.
 *
 * CONVENTIONS
 *
 * 1. Handles. Everything is reached through handles. Each kind has an ...Allocate function with an out
 *    pointer (VANTREL_STATUS_INVALID_POINTER_PARAMETER where that is null; when memory runs out,
 *    VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE and the out pointer becomes null) and a ...Free
 *    function. File handles come from VantrelClientFileOpen and end with VantrelClientFileClose.
 * 2. Ownership. The caller owns every handle it allocates, frees each once, and closes the files of a client
 *    before freeing the client. A handle given to another function is used only during the call, never kept,
 *    with one exception: a file keeps a reference to its client. Buffers belong to the caller;
 *    the library reads or writes them only during the call. Texts returned as const char * are constant and
 *    must not be freed.
 * 3. Statuses. A VantrelStatus of 0 is success, anything else a code whose text VantrelStatusCodeToString
 *    gives. Functions return it or a value; most also keep it in a handle as its last status: functions that
 *    take a client first keep it in the client, operations on an open file in the file, getters and setters
 *    in the record they are called on, where the function's description does not say otherwise. Statuses of
 *    the engine pass through unchanged.
 * 4. Checks. Handles are checked first, then pointers, then enumerations and ranges; a function that refuses
 *    its arguments changes nothing else and makes no request. A null handle gives
 *    VANTREL_STATUS_INVALID_POINTER_PARAMETER, kept nowhere; a null file VANTREL_STATUS_FILE_NOT_OPEN, kept
 *    in the client where the function takes one too. Any other null pointer that is not allowed, and a file
 *    without a client, give VANTREL_STATUS_INVALID_POINTER_PARAMETER, a value out of range
 *    VANTREL_STATUS_INVALID_OPTION. Sizes and counts are compared as unsigned numbers, so that negative ones
 *    are out of range.
 * 5. Getters. A getter returns the value and clears the last status of its handle to 0. Failing, it returns
 *    -1, or -7 where the value is an enumeration or an index, and keeps the reason as the last status.
 *    Functions that read a record return the number of bytes or -1. ...GetLastStatusCode returns the last
 *    status without clearing it.
 * 6. Text. Narrow text is zero-terminated and in the encoding of the file system. Functions ending in W take
 *    or give wide text, converted in the current locale (setlocale) through 4096 bytes: what does not fit
 *    them with its terminator gives VANTREL_STATUS_INVALID_OPTION. Those that take text check it before the
 *    client. A character that the locale cannot express ends the text without a status: in the locale "C",
 *    where a program starts, that is every one beyond ASCII.
 * 7. Numbers. Offsets count bytes from 0, lengths are bytes, enumerations are 32 bits wide. Numbers inside
 *    keys and records are the program's own bytes; the key types define their meaning.
 * 8. Threads. The library has no threads, locks or global state. A client, its files and every other handle
 *    must not be used by two threads at once; different clients may be. Each thread normally allocates its
 *    own client, which is a session of its own to the engine.
 *
 * EXAMPLE
 *
 * Create a file of 12-byte records with an index on the number in front, insert a record and read it back:
 *
 *     VantrelClient *client;
 *     VantrelFile *file;
 *     VantrelFileAttributes *attributes;
 *     VantrelIndexAttributes *index;
 *     VantrelKeySegment *segment;
 *     char key[4] = {7, 0, 0, 0}, record[12], sprocket[] = "\7\0\0\0sprocket";
 *
 *     VantrelClientAllocate(&client, 0, 0);
 *     VantrelFileAttributesAllocate(&attributes);
 *     VantrelFileAttributesSetFixedRecordLength(attributes, sizeof record);
 *     VantrelKeySegmentAllocate(&segment);
 *     VantrelKeySegmentSetField(segment, 0, 4, VANTREL_DATA_TYPE_UNSIGNED_BINARY);
 *     VantrelIndexAttributesAllocate(&index);
 *     VantrelIndexAttributesAddKeySegment(index, segment);
 *     VantrelClientFileCreate(client, attributes, index, "parts.vnt", VANTREL_CREATE_MODE_OVERWRITE,
 *                             VANTREL_LOCATION_MODE_DEFAULT);
 *     VantrelStatus status = VantrelClientFileOpen(client, &file, "parts.vnt", NULL, VANTREL_OPEN_MODE_NORMAL,
 *                                                  VANTREL_OPEN_VARIANT_DEFAULT);
 *     if (status != VANTREL_STATUS_NO_ERROR)
 *         return fprintf(stderr, "parts.vnt: %s\n", VantrelStatusCodeToString(status));
 *     VantrelFileRecordCreate(file, sprocket, sizeof record);
 *     if (VantrelFileRecordRetrieve(file, VANTREL_COMPARISON_EQUAL, 0, key, sizeof key, record, sizeof record,
 *                                   VANTREL_LOCK_MODE_NONE) >= 0)
 *         printf("%.8s\n", record + 4);
 *     VantrelClientFileClose(client, file);
 */
#ifndef VANTREL_H
#define VANTREL_H

#include <stdint.h>
#include <wchar.h>

#if defined(VANTREL_BUILDING_LIBRARY)
#define VANTREL_API __attribute__((visibility("default")))
#else
#define VANTREL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* HANDLES */

typedef struct VantrelClient VantrelClient;                         /* a session with the engine */
typedef struct VantrelFile VantrelFile;                             /* an open file and a position in it */
typedef struct VantrelVersion VantrelVersion;                       /* versions of the engine's parts */
typedef struct VantrelKeySegment VantrelKeySegment;                 /* one field of a key */
typedef struct VantrelIndexAttributes VantrelIndexAttributes;       /* an index to be created */
typedef struct VantrelFileAttributes VantrelFileAttributes;         /* a file to be created */
typedef struct VantrelFilter VantrelFilter;                         /* a condition of a bulk operation */
typedef struct VantrelBulkRetrieveAttributes VantrelBulkRetrieveAttributes; /* what a bulk retrieve asks for */
typedef struct VantrelBulkRetrieveResult VantrelBulkRetrieveResult; /* what a bulk retrieve brought */
typedef struct VantrelBulkDeleteAttributes VantrelBulkDeleteAttributes;     /* what a bulk delete asks for */
typedef struct VantrelBulkDeleteResult VantrelBulkDeleteResult;     /* what a bulk delete removed */
typedef struct VantrelBulkCreatePayload VantrelBulkCreatePayload;   /* records to be inserted together */
typedef struct VantrelBulkCreateResult VantrelBulkCreateResult;     /* where they were inserted */
typedef struct VantrelFileInformation VantrelFileInformation;       /* what the engine reports of a file */

/* PLAIN VALUES */

/* The address of a record in its file. Only its identity has a meaning; -1 is never one. */
typedef int64_t VantrelCursorPosition;

/* Ticks of 100 nanoseconds since 0001-01-01 00:00:00. */
typedef int64_t VantrelTimestamp;

/* An index of a file, counted from 0. */
typedef int32_t VantrelIndex;
enum {
    VANTREL_INDEX_NONE = -1, /* the physical order of the records */
    VANTREL_INDEX_MAXIMUM = 118,
    VANTREL_INDEX_SYSTEM_VERSION_2 = 124, /* the time of the last update */
    VANTREL_INDEX_SYSTEM = 125            /* the time of creation */
};

/* ENUMERATIONS */

/* The lock that a read takes on the record. A single lock replaces the file handle's previous one, multiple
 * locks add up. "Wait" waits for another session's lock, "no wait" gives VANTREL_STATUS_RECORD_IN_USE. */
typedef int32_t VantrelLockMode;
enum {
    VANTREL_LOCK_MODE_NONE = 0,
    VANTREL_LOCK_MODE_SINGLE_WAIT = 1,
    VANTREL_LOCK_MODE_SINGLE_NO_WAIT = 2,
    VANTREL_LOCK_MODE_MULTIPLE_WAIT = 3,
    VANTREL_LOCK_MODE_MULTIPLE_NO_WAIT = 4
};

/* Which locks VantrelFileRecordUnlock releases. */
typedef int32_t VantrelUnlockMode;
enum {
    VANTREL_UNLOCK_MODE_SINGLE = 0,
    VANTREL_UNLOCK_MODE_ALL_MULTIPLE = 1
};

/* How a key, or a field of a filter, compares with the value given. The pattern comparisons are for filters
 * only; searching by key knows neither them nor VANTREL_COMPARISON_NOT_EQUAL. */
typedef int32_t VantrelComparison;
enum {
    VANTREL_COMPARISON_NONE = 0,
    VANTREL_COMPARISON_EQUAL = 1,
    VANTREL_COMPARISON_GREATER = 2,
    VANTREL_COMPARISON_LESS = 3,
    VANTREL_COMPARISON_NOT_EQUAL = 4,
    VANTREL_COMPARISON_GREATER_OR_EQUAL = 5,
    VANTREL_COMPARISON_LESS_OR_EQUAL = 6,
    VANTREL_COMPARISON_LIKE = 7,
    VANTREL_COMPARISON_NOT_LIKE = 8,
    VANTREL_COMPARISON_REGULAR_EXPRESSION = 9
};

/* How a filter is joined to the next one; evaluation goes strictly from the first filter to the last. */
typedef int32_t VantrelConnector;
enum {
    VANTREL_CONNECTOR_LAST = 0,
    VANTREL_CONNECTOR_AND = 1,
    VANTREL_CONNECTOR_OR = 2
};

/* The type of a field, which decides how its bytes compare. Numbers are little-endian. */
typedef int32_t VantrelDataType;
enum {
    VANTREL_DATA_TYPE_CHAR = 0,              /* bytes */
    VANTREL_DATA_TYPE_ZSTRING = 1,           /* bytes up to a zero byte */
    VANTREL_DATA_TYPE_INTEGER = 2,           /* signed, 1 to 8 bytes */
    VANTREL_DATA_TYPE_UNSIGNED_BINARY = 3,   /* unsigned */
    VANTREL_DATA_TYPE_FLOAT = 4,             /* IEEE 754, 4 or 8 bytes */
    VANTREL_DATA_TYPE_AUTOINCREMENT = 5,     /* 2, 4 or 8 bytes; 0 is replaced by the next value at insert */
    VANTREL_DATA_TYPE_DATE = 6,              /* day, month (1 byte each), year (2 bytes) */
    VANTREL_DATA_TYPE_NUMERIC_STS = 7,       /* digits, sign behind them in a byte of its own */
    VANTREL_DATA_TYPE_TIME = 8,              /* hundredths, seconds, minutes, hours (1 byte each) */
    VANTREL_DATA_TYPE_NUMERIC_SA = 9,        /* digits, sign overpunched in the last one, ASCII style */
    VANTREL_DATA_TYPE_DECIMAL = 10,          /* packed decimal */
    VANTREL_DATA_TYPE_CURRENCY = 11,         /* signed ten-thousandths, 8 bytes */
    VANTREL_DATA_TYPE_MONEY = 12,            /* packed decimal with two places */
    VANTREL_DATA_TYPE_TIMESTAMP = 13,        /* VantrelTimestamp, 8 bytes */
    VANTREL_DATA_TYPE_LOGICAL = 14,          /* 1 or 2 bytes */
    VANTREL_DATA_TYPE_WSTRING = 15,          /* UTF-16, little-endian */
    VANTREL_DATA_TYPE_NUMERIC = 16,          /* digits, sign overpunched in the last one */
    VANTREL_DATA_TYPE_WZSTRING = 17,         /* UTF-16, little-endian, up to a zero unit */
    VANTREL_DATA_TYPE_BFLOAT = 18,           /* the old binary float with excess-128 exponent, 4 or 8 bytes */
    VANTREL_DATA_TYPE_GUID = 19,             /* 16 bytes */
    VANTREL_DATA_TYPE_LSTRING = 20,          /* a length byte, then bytes */
    VANTREL_DATA_TYPE_NULL_INDICATOR_SEGMENT = 21, /* 1 byte: whether the next field is null */
    VANTREL_DATA_TYPE_LEGACY_STRING = 22,    /* bytes; key segments only */
    VANTREL_DATA_TYPE_LEGACY_BINARY = 23,    /* unsigned; key segments only */
    VANTREL_DATA_TYPE_AUTO_TIMESTAMP = 24,   /* VantrelTimestamp, 8 bytes, filled at insert */
    VANTREL_DATA_TYPE_CLOB = 25,             /* text of a large object */
    VANTREL_DATA_TYPE_TIMESTAMP_2 = 26,      /* timestamp, second version, 8 bytes */
    VANTREL_DATA_TYPE_BIT = 27,              /* one flag of a byte */
    VANTREL_DATA_TYPE_NUMERIC_SLB = 28,      /* digits, sign leading, binary */
    VANTREL_DATA_TYPE_NUMERIC_SLS = 29,      /* digits, sign before them in a byte of its own */
    VANTREL_DATA_TYPE_NUMERIC_STB = 30       /* digits, sign trailing, binary */
};

/* Whether a transaction keeps others out of the files it touches. */
typedef int32_t VantrelTransactionMode;
enum {
    VANTREL_TRANSACTION_MODE_EXCLUSIVE = 0,          /* takes each file it touches for itself */
    VANTREL_TRANSACTION_MODE_CONCURRENT = 1,         /* takes a file's write side at the first change */
    VANTREL_TRANSACTION_MODE_CONCURRENT_NO_WAIT = 2  /* the same, but never waits for another session */
};

/* How a file is opened. */
typedef int32_t VantrelOpenMode;
enum {
    VANTREL_OPEN_MODE_NORMAL = 0,
    VANTREL_OPEN_MODE_ACCELERATED = 1, /* faster and less durable: changes are not synced until close */
    VANTREL_OPEN_MODE_READ_ONLY = 2,
    VANTREL_OPEN_MODE_EXCLUSIVE = 3, /* no other session may have the file open */
    VANTREL_OPEN_MODE_VERIFY = 4     /* the whole file is checked first */
};

/* Where the engine looks for the file. */
typedef int32_t VantrelOpenVariant;
enum {
    VANTREL_OPEN_VARIANT_DEFAULT = 0,
    VANTREL_OPEN_VARIANT_LOCAL = 1,
    VANTREL_OPEN_VARIANT_REMOTE = 2
};

/* What happens to an existing file of the same name. */
typedef int32_t VantrelCreateMode;
enum {
    VANTREL_CREATE_MODE_OVERWRITE = 0,   /* an existing file that nobody has open is replaced */
    VANTREL_CREATE_MODE_NO_OVERWRITE = 1 /* an existing file gives VANTREL_STATUS_FILE_ALREADY_EXISTS */
};

/* Where a file is created. */
typedef int32_t VantrelLocationMode;
enum {
    VANTREL_LOCATION_MODE_DEFAULT = 0,
    VANTREL_LOCATION_MODE_LOCAL = 1,
    VANTREL_LOCATION_MODE_REMOTE = 2
};

/* What kind of component a version is reported of. */
typedef int32_t VantrelVersionType;
enum {
    VANTREL_VERSION_TYPE_NONE = 0,
    VANTREL_VERSION_TYPE_VANTREL_ENGINE = 1,
    VANTREL_VERSION_TYPE_WORKGROUP_ENGINE = 2,
    VANTREL_VERSION_TYPE_DOS_WORKSTATION = 3,
    VANTREL_VERSION_TYPE_CLIENT_REQUESTER = 4,
    VANTREL_VERSION_TYPE_WINDOWS_SERVER_ENGINE = 5,
    VANTREL_VERSION_TYPE_UNIX = 6,
    VANTREL_VERSION_TYPE_CLIENT_ENGINE = 7
};

/* The version of the file format that a file is created in. */
typedef int32_t VantrelFileVersion;
enum {
    VANTREL_FILE_VERSION_6_0 = 0,
    VANTREL_FILE_VERSION_6_1 = 1,
    VANTREL_FILE_VERSION_7_0 = 2,
    VANTREL_FILE_VERSION_8_0 = 3,
    VANTREL_FILE_VERSION_9_0 = 4,
    VANTREL_FILE_VERSION_9_5 = 5,
    VANTREL_FILE_VERSION_DEFAULT = 6,
    VANTREL_FILE_VERSION_13_0 = 7,
    VANTREL_FILE_VERSION_16_0 = 8
};

/* The bytes of a page of a file. */
typedef int32_t VantrelPageSize;
enum {
    VANTREL_PAGE_SIZE_512 = 0,
    VANTREL_PAGE_SIZE_1024 = 1,
    VANTREL_PAGE_SIZE_1536 = 2,
    VANTREL_PAGE_SIZE_2048 = 3,
    VANTREL_PAGE_SIZE_3072 = 4,
    VANTREL_PAGE_SIZE_3584 = 5,
    VANTREL_PAGE_SIZE_4096 = 6,
    VANTREL_PAGE_SIZE_8192 = 7,
    VANTREL_PAGE_SIZE_16384 = 8,
    VANTREL_PAGE_SIZE_DEFAULT = 9
};

/* How much of a page is kept free for records that grow. */
typedef int32_t VantrelFreeSpaceThreshold;
enum {
    VANTREL_FREE_SPACE_THRESHOLD_10_PERCENT = 0,
    VANTREL_FREE_SPACE_THRESHOLD_20_PERCENT = 1,
    VANTREL_FREE_SPACE_THRESHOLD_30_PERCENT = 2,
    VANTREL_FREE_SPACE_THRESHOLD_DEFAULT = 3
};

/* Whether records carry their times of creation and update with an index on them. */
typedef int32_t VantrelSystemDataMode;
enum {
    VANTREL_SYSTEM_DATA_MODE_YES = 0,
    VANTREL_SYSTEM_DATA_MODE_NO = 1,
    VANTREL_SYSTEM_DATA_MODE_DEFAULT = 2,
    VANTREL_SYSTEM_DATA_MODE_VERSION_2 = 3
};

/* The alternate collating sequence (ACS) of the text of an index or a filter. */
typedef int32_t VantrelACSMode;
enum {
    VANTREL_ACS_MODE_NONE = 0,
    VANTREL_ACS_MODE_NAMED = 1,
    VANTREL_ACS_MODE_NUMBERED = 2,
    VANTREL_ACS_MODE_CASE_INSENSITIVE = 3,
    VANTREL_ACS_MODE_DEFAULT = 4
};

/* Whether a record whose key is null is left out of the index: when all segments are null, when any is, or
 * never. */
typedef int32_t VantrelNullKeyMode;
enum {
    VANTREL_NULL_KEY_MODE_ALL_SEGMENTS = 0,
    VANTREL_NULL_KEY_MODE_ANY_SEGMENTS = 1,
    VANTREL_NULL_KEY_MODE_NONE = 2
};

/* Whether two records may have the same key; repeating or not is a matter of storage. */
typedef int32_t VantrelDuplicateMode;
enum {
    VANTREL_DUPLICATE_MODE_NOT_ALLOWED = 0,
    VANTREL_DUPLICATE_MODE_ALLOWED_NONREPEATING = 1,
    VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING = 2
};

/* What kind of page another session has locked. */
typedef int32_t VantrelPageLockType;
enum {
    VANTREL_PAGE_LOCK_TYPE_NONE = 0,
    VANTREL_PAGE_LOCK_TYPE_DATA_PAGE = 1,
    VANTREL_PAGE_LOCK_TYPE_INDEX_PAGE = 2,
    VANTREL_PAGE_LOCK_TYPE_VARIABLE_PAGE = 3
};

/* What a file's owner name protects. */
typedef int32_t VantrelOwnerMode;
enum {
    VANTREL_OWNER_MODE_NONE = 0,
    VANTREL_OWNER_MODE_NO_ENCRYPTION_NO_READ_ALLOWED = 1,
    VANTREL_OWNER_MODE_NO_ENCRYPTION_READ_ALLOWED = 2,
    VANTREL_OWNER_MODE_ENCRYPTION_NO_READ_ALLOWED = 3,
    VANTREL_OWNER_MODE_ENCRYPTION_READ_ALLOWED = 4
};

/* How a file is encrypted. */
typedef int32_t VantrelEncryptionType;
enum {
    VANTREL_ENCRYPTION_TYPE_NONE = 0,
    VANTREL_ENCRYPTION_TYPE_TRADITIONAL = 1,
    VANTREL_ENCRYPTION_TYPE_128_BIT = 2,
    VANTREL_ENCRYPTION_TYPE_AES_192 = 3,
    VANTREL_ENCRYPTION_TYPE_AES_256 = 4
};

/* How the records of a file are compressed. */
typedef int32_t VantrelRecordCompressionMode;
enum {
    VANTREL_RECORD_COMPRESSION_MODE_NONE = 0,
    VANTREL_RECORD_COMPRESSION_MODE_BLANK_TRUNCATION = 1,
    VANTREL_RECORD_COMPRESSION_MODE_RUN_LENGTH_ENCODING = 2
};

/* Whether records may be longer than the fixed length, and have variable allocation tails. */
typedef int32_t VantrelVariableLengthRecordsMode;
enum {
    VANTREL_VARIABLE_LENGTH_RECORDS_MODE_NONE = 0,
    VANTREL_VARIABLE_LENGTH_RECORDS_MODE_YES = 1,
    VANTREL_VARIABLE_LENGTH_RECORDS_MODE_YES_VARIABLE_ALLOCATION_TAILS = 2
};

/* A field that the engine keeps with every record. */
typedef int32_t VantrelSystemField;
enum {
    VANTREL_SYSTEM_FIELD_CREATE_TIME = 0,
    VANTREL_SYSTEM_FIELD_UPDATE_TIME = 1
};

/* STATUSES */

/* Of these the library itself gives FILE_NOT_OPEN, DATA_LENGTH_ERROR, NO_OPERATING_SYSTEM_MEMORY_AVAILABLE,
 * INTERNAL_ERROR, INVALID_OPTION, INVALID_POINTER_PARAMETER and FILTER_LIMIT_EXCEEDED; all others come from
 * the engine. */
typedef int32_t VantrelStatus;
enum {
    VANTREL_STATUS_NO_ERROR = 0,
    VANTREL_STATUS_INVALID_FUNCTION = 1,
    VANTREL_STATUS_INPUT_OUTPUT_ERROR = 2,
    VANTREL_STATUS_FILE_NOT_OPEN = 3,
    VANTREL_STATUS_KEY_VALUE_NOT_FOUND = 4,
    VANTREL_STATUS_DUPLICATE_KEY_VALUE = 5,
    VANTREL_STATUS_INVALID_INDEX_NUMBER = 6,
    VANTREL_STATUS_DIFFERENT_INDEX_NUMBER = 7,
    VANTREL_STATUS_POSITION_NOT_SET = 8,
    VANTREL_STATUS_END_OF_FILE = 9,
    VANTREL_STATUS_MODIFIABLE_KEY_VALUE_ERROR = 10,
    VANTREL_STATUS_FILE_NAME_BAD = 11,
    VANTREL_STATUS_FILE_NOT_FOUND = 12,
    VANTREL_STATUS_EXTENDED_FILE_ERROR = 13,
    VANTREL_STATUS_PREIMAGE_OPEN_ERROR = 14,
    VANTREL_STATUS_PREIMAGE_INPUT_OUTPUT_ERROR = 15,
    VANTREL_STATUS_EXPANSION_ERROR = 16,
    VANTREL_STATUS_CLOSE_ERROR = 17,
    VANTREL_STATUS_DISK_FULL = 18,
    VANTREL_STATUS_UNRECOVERABLE_ERROR = 19,
    VANTREL_STATUS_RECORD_MANAGER_INACTIVE = 20,
    VANTREL_STATUS_KEY_BUFFER_TOO_SHORT = 21,
    VANTREL_STATUS_DATA_LENGTH_ERROR = 22,
    VANTREL_STATUS_POSITION_BLOCK_LENGTH = 23,
    VANTREL_STATUS_PAGE_SIZE_ERROR = 24,
    VANTREL_STATUS_CREATE_INPUT_OUTPUT_ERROR = 25,
    VANTREL_STATUS_NUMBER_OF_INDEXES = 26,
    VANTREL_STATUS_INVALID_KEY_POSITION = 27,
    VANTREL_STATUS_INVALID_RECORD_LENGTH = 28,
    VANTREL_STATUS_INVALID_KEY_LENGTH = 29,
    VANTREL_STATUS_NOT_A_VANTREL_FILE = 30,
    VANTREL_STATUS_FILE_ALREADY_EXTENDED = 31,
    VANTREL_STATUS_EXTEND_INPUT_OUTPUT_ERROR = 32,
    VANTREL_STATUS_VANTREL_CANNOT_UNLOAD = 33,
    VANTREL_STATUS_INVALID_EXTENSION_NAME = 34,
    VANTREL_STATUS_DIRECTORY_ERROR = 35,
    VANTREL_STATUS_TRANSACTION_ERROR = 36,
    VANTREL_STATUS_TRANSACTION_IS_ACTIVE = 37,
    VANTREL_STATUS_TRANSACTION_FILE_INPUT_OUTPUT_ERROR = 38,
    VANTREL_STATUS_END_TRANSACTION_ERROR = 39,
    VANTREL_STATUS_TRANSACTION_MAXIMUM_FILES = 40,
    VANTREL_STATUS_OPERATION_NOT_ALLOWED = 41,
    VANTREL_STATUS_INCOMPLETE_ACCELERATED_ACCESS = 42,
    VANTREL_STATUS_INVALID_RECORD_ADDRESS = 43,
    VANTREL_STATUS_NULL_KEY_PATH = 44,
    VANTREL_STATUS_INCONSISTENT_KEY_FLAGS = 45,
    VANTREL_STATUS_ACCESS_TO_FILE_DENIED = 46,
    VANTREL_STATUS_MAXIMUM_OPEN_FILES = 47,
    VANTREL_STATUS_INVALID_ALTERNATE_COLLATING_SEQUENCE_DEFINITION = 48,
    VANTREL_STATUS_KEY_TYPE_ERROR = 49,
    VANTREL_STATUS_OWNER_ALREADY_SET = 50,
    VANTREL_STATUS_INVALID_OWNER = 51,
    VANTREL_STATUS_ERROR_WRITING_CACHE = 52,
    VANTREL_STATUS_INVALID_INTERFACE = 53,
    VANTREL_STATUS_VARIABLE_PAGE_ERROR = 54,
    VANTREL_STATUS_AUTOINCREMENT_ERROR = 55,
    VANTREL_STATUS_INCOMPLETE_INDEX = 56,
    VANTREL_STATUS_EXPANDED_MEMORY_ERROR = 57,
    VANTREL_STATUS_COMPRESS_BUFFER_TOO_SHORT = 58,
    VANTREL_STATUS_FILE_ALREADY_EXISTS = 59,
    VANTREL_STATUS_REJECT_COUNT_REACHED = 60,
    VANTREL_STATUS_SMALL_EXTENDED_GET_BUFFER_ERROR = 61,
    VANTREL_STATUS_INVALID_GET_EXPRESSION = 62,
    VANTREL_STATUS_INVALID_EXTENDED_INSERT_BUFFER = 63,
    VANTREL_STATUS_OPTIMIZE_LIMIT_REACHED = 64,
    VANTREL_STATUS_INVALID_EXTRACTOR = 65,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_TOO_MANY_DATABASES = 66,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_SQL_DATA_DICTIONARY_FILES_CANNOT_OPEN = 67,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_CASCADE_TOO_DEEP = 68,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_CASCADE_ERROR = 69,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_VIOLATION = 71,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_REFERENCED_FILE_CANNOT_OPEN = 72,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_OUT_OF_SYNC = 73,
    VANTREL_STATUS_END_CHANGED_TO_ABORT = 74,
    VANTREL_STATUS_REFERENTIAL_INTEGRITY_CONFLICT = 76,
    VANTREL_STATUS_CANT_LOOP_IN_SERVER = 77,
    VANTREL_STATUS_DEAD_LOCK = 78,
    VANTREL_STATUS_PROGRAMMING_ERROR = 79,
    VANTREL_STATUS_CONFLICT = 80,
    VANTREL_STATUS_LOCK_ERROR = 81,
    VANTREL_STATUS_LOST_POSITION = 82,
    VANTREL_STATUS_READ_OUTSIDE_TRANSACTION = 83,
    VANTREL_STATUS_RECORD_IN_USE = 84,
    VANTREL_STATUS_FILE_IN_USE = 85,
    VANTREL_STATUS_FILE_TABLE_FULL = 86,
    VANTREL_STATUS_NO_HANDLES_AVAILABLE = 87,
    VANTREL_STATUS_INCOMPATIBLE_MODE_ERROR = 88,
    VANTREL_STATUS_DEVICE_TABLE_FULL = 90,
    VANTREL_STATUS_SERVER_ERROR = 91,
    VANTREL_STATUS_TRANSACTION_TABLE_FULL = 92,
    VANTREL_STATUS_INCOMPATIBLE_LOCK_TYPE = 93,
    VANTREL_STATUS_PERMISSION_ERROR = 94,
    VANTREL_STATUS_SESSION_NO_LONGER_VALID = 95,
    VANTREL_STATUS_COMMUNICATIONS_ERROR = 96,
    VANTREL_STATUS_DATA_MESSAGE_TOO_SMALL = 97,
    VANTREL_STATUS_INTERNAL_TRANSACTION_ERROR = 98,
    VANTREL_STATUS_REQUESTER_CANT_ACCESS_RUNTIME = 99,
    VANTREL_STATUS_NO_CACHE_BUFFERS_AVAILABLE = 100,
    VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE = 101,
    VANTREL_STATUS_NO_STACK_AVAILABLE = 102,
    VANTREL_STATUS_CHUNK_OFFSET_TOO_LONG = 103,
    VANTREL_STATUS_LOCALE_ERROR = 104,
    VANTREL_STATUS_CANNOT_CREATE_WITH_VARIABLE_TAIL_ALLOCATION_TABLE = 105,
    VANTREL_STATUS_CHUNK_CANNOT_GET_NEXT = 106,
    VANTREL_STATUS_CHUNK_INCOMPATIBLE_FILE = 107,
    VANTREL_STATUS_TRANSACTION_TOO_COMPLEX = 109,
    VANTREL_STATUS_ARCHIVAL_BLOG_OPEN_ERROR = 110,
    VANTREL_STATUS_ARCHIVAL_FILE_NOT_LOGGED = 111,
    VANTREL_STATUS_ARCHIVAL_FILE_IN_USE = 112,
    VANTREL_STATUS_ARCHIVAL_LOG_FILE_NOT_FOUND = 113,
    VANTREL_STATUS_ARCHIVAL_LOG_FILE_INVALID = 114,
    VANTREL_STATUS_ARCHIVAL_DUMP_FILE_ACCESS_ERROR = 115,
    VANTREL_STATUS_LOCATOR_FILE_INDICATOR = 116,
    VANTREL_STATUS_NO_SYSTEM_LOCKS_AVAILABLE = 130,
    VANTREL_STATUS_FILE_FULL = 132,
    VANTREL_STATUS_MORE_THAN_5_CONCURRENT_USERS = 133,
    VANTREL_STATUS_INTERNATIONAL_SORTING_RULE_NOT_FOUND = 134,
    VANTREL_STATUS_INTERNATIONAL_SORTING_RULE_INVALID = 135,
    VANTREL_STATUS_ALTERNATE_COLLATING_SEQUENCE_NOT_FOUND = 136,
    VANTREL_STATUS_CANNOT_CONVERT_RP = 137,
    VANTREL_STATUS_INVALID_NULL_INDICATOR = 138,
    VANTREL_STATUS_INVALID_KEY_OPTION = 139,
    VANTREL_STATUS_INCOMPATIBLE_CLOSE = 140,
    VANTREL_STATUS_INVALID_USER_NAME = 141,
    VANTREL_STATUS_INVALID_DATABASE = 142,
    VANTREL_STATUS_NO_KALDER_RIGHTS = 143,
    VANTREL_STATUS_ALREADY_LOGGED_IN = 144,
    VANTREL_STATUS_NO_DATABASE_SERVICES = 145,
    VANTREL_STATUS_DUPLICATE_SYSTEM_KEY = 146,
    VANTREL_STATUS_LOG_SEGMENT_MISSING = 147,
    VANTREL_STATUS_ROLL_FORWARD_ERROR = 148,
    VANTREL_STATUS_SYSTEM_KEY_INTERNAL = 149,
    VANTREL_STATUS_DBS_INTERNAL_ERROR = 150,
    VANTREL_STATUS_CHUNK_OFFSET_TOO_SMALL = 151,
    VANTREL_STATUS_INVALID_PARAMETER_TO_OSTRAND = 160,
    VANTREL_STATUS_USER_COUNT_LIMIT_EXCEEDED = 161,
    VANTREL_STATUS_CLIENT_TABLE_FULL = 162,
    VANTREL_STATUS_LAST_SEGMENT_ERROR = 163,
    VANTREL_STATUS_LOGIN_FAILED_BAD_USER_NAME = 170,
    VANTREL_STATUS_LOGIN_FAILED_BAD_PASSWORD = 171,
    VANTREL_STATUS_LOGIN_FAILED_BAD_DATABASE = 172,
    VANTREL_STATUS_LOGIN_ALREADY_LOGGED_IN = 173,
    VANTREL_STATUS_LOGIN_LOGOUT_FAILED = 174,
    VANTREL_STATUS_LOGIN_WRONG_UNIFORM_RESOURCE_INDICATOR_FORMAT = 175,
    VANTREL_STATUS_LOGIN_FILE_AND_TABLE_NOT_FOUND = 176,
    VANTREL_STATUS_LOGIN_TABLE_NOT_IN_DATABASE = 177,
    VANTREL_STATUS_LOGIN_DIRECTORY_NOT_IN_DATABASE = 178,
    VANTREL_STATUS_LOCK_PARAMETER_OUT_OF_RANGE = 1001,
    VANTREL_STATUS_MEMORY_ALLOCATION_ERROR = 1002,
    VANTREL_STATUS_MEMORY_PARAMETER_TOO_SMALL = 1003,
    VANTREL_STATUS_PAGE_SIZE_PARAMETER_OUT_OF_RANGE = 1004,
    VANTREL_STATUS_INVALID_PREIMAGE_PARAMETER = 1005,
    VANTREL_STATUS_PREIMAGE_BUFFER_PARAMETER_OUT_OF_RANGE = 1006,
    VANTREL_STATUS_FILES_PARAMETER_OUT_OF_RANGE = 1007,
    VANTREL_STATUS_INVALID_INITIALIZATION_PARAMETER = 1008,
    VANTREL_STATUS_INVALID_TRANSACTION_PARAMETER = 1009,
    VANTREL_STATUS_ERROR_ACCESS_TRANSACTION_CONTROL_FILE = 1010,
    VANTREL_STATUS_COMPRESSION_BUFFER_PARAMETER_OUT_OF_RANGE = 1011,
    VANTREL_STATUS_INVALID_MAXIMUM_NUMBER_OF_FILES_IN_A_TRANSACTION_OPTION = 1012,
    VANTREL_STATUS_TASK_LIST_FULL = 1013,
    VANTREL_STATUS_STOP_WARNING = 1014,
    VANTREL_STATUS_POINTER_PARAMETER_INVALID = 1015,
    VANTREL_STATUS_ALREADY_INITIALIZED = 1016,
    VANTREL_STATUS_VANTREL_REQUESTER_CANT_FIND_RESOURCE_DLL = 1017,
    VANTREL_STATUS_ALREADY_INSIDE_VANTREL_FUNCTION = 1018,
    VANTREL_STATUS_CALLBACK_ABORT = 1019,
    VANTREL_STATUS_INTERFACE_COMMUNICATIONS_ERROR = 1020,
    VANTREL_STATUS_FAILED_TO_INITIALIZE = 1021,
    VANTREL_STATUS_OSTRAND_SHUTTING_DOWN = 1022,
    VANTREL_STATUS_INTERNAL_ERROR = 2000,
    VANTREL_STATUS_INSUFFICIENT_MEMORY_ALLOCATION = 2001,
    VANTREL_STATUS_INVALID_OPTION = 2002,
    VANTREL_STATUS_NO_LOCAL_ACCESS_ALLOWED = 2003,
    VANTREL_STATUS_SPX_NOT_INSTALLED = 2004,
    VANTREL_STATUS_INCORRECT_SPX_VERSION = 2005,
    VANTREL_STATUS_NO_AVAILABLE_SPX_CONNECTION = 2006,
    VANTREL_STATUS_INVALID_POINTER_PARAMETER = 2007,
    VANTREL_STATUS_CANT_CONNECT_TO_615 = 2008,
    VANTREL_STATUS_CANT_LOAD_OSTRAND_ROUTER = 2009,
    VANTREL_STATUS_UT_THUNK_NOT_LOADED = 2010,
    VANTREL_STATUS_NO_RESOURCE_DLL = 2011,
    VANTREL_STATUS_OPERATING_SYSTEM_ERROR = 2012,
    VANTREL_STATUS_FILTER_LIMIT_EXCEEDED = 2013,
    VANTREL_STATUS_OSTRAND_ROUTER_MEMORY_ERROR = 3000,
    VANTREL_STATUS_OSTRAND_NO_LOCAL_ACCESS_ALLOWED = 3001,
    VANTREL_STATUS_OSTRAND_NO_RESOURCE_DLL = 3002,
    VANTREL_STATUS_OSTRAND_INCOMPATIBLE_COMPONENT = 3003,
    VANTREL_STATUS_OSTRAND_TIMEOUT_ERROR = 3004,
    VANTREL_STATUS_OSTRAND_OPERATING_SYSTEM_ERROR = 3005,
    VANTREL_STATUS_OSTRAND_INVALID_SESSION = 3006,
    VANTREL_STATUS_OSTRAND_SERVER_NOT_FOUND = 3007,
    VANTREL_STATUS_OSTRAND_INVALID_CONFIGURATION = 3008,
    VANTREL_STATUS_OSTRAND_NETAPI_NOT_LOADED = 3009,
    VANTREL_STATUS_OSTRAND_NWAPI_NOT_LOADED = 3010,
    VANTREL_STATUS_OSTRAND_THUNK_NOT_LOADED = 3011,
    VANTREL_STATUS_OSTRAND_LOCAL_NOT_LOADED = 3012,
    VANTREL_STATUS_OSTRAND_DREVO_NETWORK_SERVICES_LAYER_NOT_LOADED = 3013,
    VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE = 3014,
    VANTREL_STATUS_OSTRAND_INITIALIZATION_ERROR = 3015,
    VANTREL_STATUS_OSTRAND_INTERNAL_ERROR = 3016,
    VANTREL_STATUS_OSTRAND_LOCAL_OSTRAND_DATA_BUFFER_TOO_SMALL = 3017,
    VANTREL_STATUS_OSTRAND_CLOSED_ERROR = 3018,
    VANTREL_STATUS_OSTRAND_SEMAPHORE_ERROR = 3019,
    VANTREL_STATUS_OSTRAND_LOADING_ERROR = 3020,
    VANTREL_STATUS_OSTRAND_BAD_SRB_FORMAT = 3021,
    VANTREL_STATUS_OSTRAND_DATA_BUFFER_LENGTH_TOO_LARGE = 3022,
    VANTREL_STATUS_OSTRAND_TASK_TABLE_FULL = 3023,
    VANTREL_STATUS_OSTRAND_INVALID_OPERATION_ON_REMOTE = 3024,
    VANTREL_STATUS_OSTRAND_PIDS_NOT_LOADED = 3025,
    VANTREL_STATUS_OSTRAND_BAD_PIDS = 3026,
    VANTREL_STATUS_OSTRAND_IDS_CONNECT_FAILURE = 3027,
    VANTREL_STATUS_OSTRAND_IDS_LOGIN_FAILURE = 3028,
    VANTREL_STATUS_NETWORK_LAYER_FAILURE = 3101,
    VANTREL_STATUS_NETWORK_LAYER_NOT_INITIALIZED = 3102,
    VANTREL_STATUS_NETWORK_LAYER_NAME_NOT_FOUND = 3103,
    VANTREL_STATUS_NETWORK_LAYER_PERMISSION_ERROR = 3104,
    VANTREL_STATUS_NETWORK_LAYER_NO_AVAILABLE_TRANSPORT = 3105,
    VANTREL_STATUS_NETWORK_LAYER_CONNECTION_FAILURE = 3106,
    VANTREL_STATUS_NETWORK_LAYER_OUT_OF_MEMORY = 3107,
    VANTREL_STATUS_NETWORK_LAYER_INVALID_SESSION = 3108,
    VANTREL_STATUS_NETWORK_LAYER_MORE_DATA = 3109,
    VANTREL_STATUS_NETWORK_LAYER_NOT_CONNECTED = 3110,
    VANTREL_STATUS_NETWORK_LAYER_SEND_FAILURE = 3111,
    VANTREL_STATUS_NETWORK_LAYER_RECEIVE_FAILURE = 3112,
    VANTREL_STATUS_NETWORK_LAYER_INVALID_SERVER_TYPE = 3113,
    VANTREL_STATUS_NETWORK_LAYER_SERVER_ROUTING_TABLE_FULL = 3114,
    VANTREL_STATUS_NETWORK_LAYER_TRANSPORT_FAILURE = 3115,
    VANTREL_STATUS_NETWORK_LAYER_RECEIVE_DATA_OVERFLOW = 3116,
    VANTREL_STATUS_NETWORK_LAYER_CST_FULL = 3117,
    VANTREL_STATUS_NETWORK_LAYER_INVALID_ADDRESS_FAMILY = 3118,
    VANTREL_STATUS_NETWORK_LAYER_NO_AUTHENTICATION_CONTEXT_AVAILABLE = 3119,
    VANTREL_STATUS_NETWORK_LAYER_INVALID_AUTHENTICATION_TYPE = 3120,
    VANTREL_STATUS_NETWORK_LAYER_INVALID_AUTHENTICATION_OBJECT = 3121,
    VANTREL_STATUS_NETWORK_LAYER_AUTHENTICATION_LENGTH_TOO_SMALL = 3122,
    VANTREL_STATUS_NETWORK_LAYER_INVALID_SESSION_LEVEL_PARAMETER = 3123,
    VANTREL_STATUS_NETWORK_LAYER_TASK_TABLE_FULL = 3124,
    VANTREL_STATUS_NETWORK_LAYER_NDS_NAME_RESOLUTION_ERROR = 3125,
    VANTREL_STATUS_NETWORK_LAYER_FILE_NAME_RESOLUTION_ERROR = 3126,
    VANTREL_STATUS_NETWORK_LAYER_IDS_SEND_FAILURE = 3127,
    VANTREL_STATUS_NETWORK_LAYER_IDS_RECEIVE_FAILURE = 3128
};

/* CLIENT
 *
 * A client is a session with the engine: transactions, locks, the current directory and a login belong to
 * it, under the identifier block made of its two identifiers. */

/* Allocates a client. Each identifier is 0 to 65535; 0 stands for the low 16 bits of the process identifier
 * (service agent) and of the calling thread's (client), which can coincide for two threads: programs with
 * several sessions give their own.
 *
 * Two clients with equal identifiers are one session to the engine. Before a client is freed,
 * VantrelClientReset ends what the session still holds, or a later client with the same identifiers inherits
 * it.
 *
 * Returns VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null out pointer; VANTREL_STATUS_INVALID_OPTION for
 * an identifier above 65535, the out pointer then untouched;
 * VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE, the out pointer then null. */
VANTREL_API VantrelStatus VantrelClientAllocate(VantrelClient **client, uint32_t serviceAgentIdentifier,
                                                uint32_t clientIdentifier);

/* Frees the client; null is harmless. Its files must have been closed: neither they nor the engine's session
 * end here. Returns 0. */
VANTREL_API VantrelStatus VantrelClientFree(VantrelClient *client);

/* The client's last status, which stays; VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelClientGetLastStatusCode(const VantrelClient *client);

/* The identifiers, 0 to 65535; for null VANTREL_STATUS_INVALID_POINTER_PARAMETER, which is a possible
 * identifier too. */
VANTREL_API int32_t VantrelClientGetServiceAgentIdentifier(VantrelClient *client);
VANTREL_API int32_t VantrelClientGetClientIdentifier(VantrelClient *client);

/* CLIENT OPERATIONS
 *
 * The session's transactions, its current directory and its login, and files put at rest for a backup. Each
 * function makes one request and keeps its status in the client; a null client or text gives
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER. */

/* The drive that stands for the current one. 0 to 25 are drives of a system that has such; elsewhere they
 * give VANTREL_STATUS_DIRECTORY_ERROR. */
enum { VANTREL_DRIVE_CURRENT = 26 };

/* Sets the directory that relative file names of the session start from; a path that is none gives
 * VANTREL_STATUS_DIRECTORY_ERROR. */
VANTREL_API VantrelStatus VantrelClientSetCurrentDirectory(VantrelClient *client, const char *path);
VANTREL_API VantrelStatus VantrelClientSetCurrentDirectoryW(VantrelClient *client, const wchar_t *path);

/* Writes the current directory of a drive, zero-terminated, into the buffer of bufferLength bytes. The length
 * goes to the engine unchecked; one that is too small gives VANTREL_STATUS_KEY_BUFFER_TOO_SHORT. A drive
 * above VANTREL_DRIVE_CURRENT gives VANTREL_STATUS_INVALID_OPTION. */
VANTREL_API VantrelStatus VantrelClientGetCurrentDirectory(VantrelClient *client, uint32_t drive,
                                                           char *buffer, int32_t bufferLength);

/* The same in wide characters, of which the buffer holds bufferLength. A length that is not positive, which
 * is checked first, gives VANTREL_STATUS_INVALID_OPTION, and so does a directory that does not fit with its
 * terminator: the buffer then holds its beginning, unterminated. A byte that cannot be converted ends the
 * text; the rest of the buffer is then zero. A null buffer is refused last, after the request. */
VANTREL_API VantrelStatus VantrelClientGetCurrentDirectoryW(VantrelClient *client, uint32_t drive,
                                                            wchar_t *buffer, int32_t bufferLength);

/* Ends what the session holds: its transaction is aborted, its locks are released and its files are closed at
 * the engine. Close the files first: their handles cannot be closed, and so not be freed, afterwards. */
VANTREL_API VantrelStatus VantrelClientReset(VantrelClient *client);

/* The same for every session of the process. */
VANTREL_API VantrelStatus VantrelClientStop(VantrelClient *client);

/* Begins a transaction, to which all changes of the session belong until it ends. The lock mode is the one of
 * reads inside that ask for none. A mode that does not exist gives VANTREL_STATUS_INVALID_OPTION; a
 * transaction begun already VANTREL_STATUS_TRANSACTION_IS_ACTIVE. */
VANTREL_API VantrelStatus VantrelClientTransactionBegin(VantrelClient *client,
                                                        VantrelTransactionMode transactionMode,
                                                        VantrelLockMode lockMode);

/* Make the changes of the transaction permanent, or undo them. Without a transaction, end gives
 * VANTREL_STATUS_END_TRANSACTION_ERROR and abort VANTREL_STATUS_TRANSACTION_ERROR. */
VANTREL_API VantrelStatus VantrelClientTransactionEnd(VantrelClient *client);
VANTREL_API VantrelStatus VantrelClientTransactionAbort(VantrelClient *client);

/* Log the session in to a database and out of it. The library hands the text on; the engine takes
 * vantrel://[user@][host]/[database][?option=value[&option=value...]] in both.
 *
 * From the engine come VANTREL_STATUS_LOGIN_WRONG_UNIFORM_RESOURCE_INDICATOR_FORMAT for another text,
 * VANTREL_STATUS_LOGIN_ALREADY_LOGGED_IN for a second login, VANTREL_STATUS_LOGIN_LOGOUT_FAILED for a logout
 * without a login, and VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE for a host without an engine. */
VANTREL_API VantrelStatus VantrelClientLogin(VantrelClient *client, const char *text);
VANTREL_API VantrelStatus VantrelClientLoginW(VantrelClient *client, const wchar_t *text);
VANTREL_API VantrelStatus VantrelClientLogout(VantrelClient *client, const char *text);
VANTREL_API VantrelStatus VantrelClientLogoutW(VantrelClient *client, const wchar_t *text);

/* Between begin and end, the named files do not change on disk while work on them goes on, so that any tool
 * can copy them: a copy holds all that was committed at the beginning. The paths are separated by commas; all
 * begin or none. What the client does not end itself ends with its reset and with the process.
 *
 * From the engine come VANTREL_STATUS_FILE_NOT_FOUND for a path that does not exist,
 * VANTREL_STATUS_OPERATION_NOT_ALLOWED for a second begin, an end without one and either inside a
 * transaction, VANTREL_STATUS_FILE_IN_USE where another session's transaction holds a file or somebody has it
 * open exclusively, and VANTREL_STATUS_PERMISSION_ERROR without the right to write to it. */
VANTREL_API VantrelStatus VantrelClientContinuousOperationBegin(VantrelClient *client, const char *paths);
VANTREL_API VantrelStatus VantrelClientContinuousOperationBeginW(VantrelClient *client, const wchar_t *paths);
VANTREL_API VantrelStatus VantrelClientContinuousOperationEnd(VantrelClient *client, const char *paths);
VANTREL_API VantrelStatus VantrelClientContinuousOperationEndW(VantrelClient *client, const wchar_t *paths);

/* FILE OPEN AND CLOSE
 *
 * A file handle is a position in an open file, from a successful open to a successful close. Statuses of both
 * are kept in the client. */

/* Opens the file and hands out a handle, whose last status is 0. The owner name is null where the file has
 * none; an empty one is sent as a name.
 *
 * A null client, file name or out pointer gives VANTREL_STATUS_INVALID_POINTER_PARAMETER; a mode or variant
 * that does not exist VANTREL_STATUS_INVALID_OPTION: the out pointer is untouched by both. Any failure after
 * them, VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE or a status of the engine, makes it null.
 *
 * From the engine come VANTREL_STATUS_FILE_NAME_BAD for a name that is empty or too long,
 * VANTREL_STATUS_FILE_NOT_FOUND, VANTREL_STATUS_NOT_A_VANTREL_FILE, VANTREL_STATUS_INVALID_OWNER where the
 * owner name is missing or wrong, VANTREL_STATUS_FILE_IN_USE where another session has the file exclusively
 * or an exclusive open finds it open, VANTREL_STATUS_PERMISSION_ERROR without the right to it,
 * VANTREL_STATUS_INPUT_OUTPUT_ERROR for damage that VANTREL_OPEN_MODE_VERIFY or the opening itself meets, and
 * VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE for VANTREL_OPEN_VARIANT_REMOTE without a server. Through a handle
 * opened read-only, every change gives VANTREL_STATUS_ACCESS_TO_FILE_DENIED. */
VANTREL_API VantrelStatus VantrelClientFileOpen(VantrelClient *client, VantrelFile **file,
                                                const char *fileName, const char *ownerName,
                                                VantrelOpenMode openMode, VantrelOpenVariant openVariant);

/* The same with a wide file name; the owner name stays narrow. */
VANTREL_API VantrelStatus VantrelClientFileOpenW(VantrelClient *client, VantrelFile **file,
                                                 const wchar_t *fileName, const char *ownerName,
                                                 VantrelOpenMode openMode, VantrelOpenVariant openVariant);

/* Closes the file through the client that opened it and frees the handle. Any status but 0 leaves both: null
 * gives VANTREL_STATUS_FILE_NOT_OPEN, a file without a client VANTREL_STATUS_INVALID_POINTER_PARAMETER, the
 * file of another client VANTREL_STATUS_INVALID_OPTION. A null client counts as another one; nothing is then
 * kept. */
VANTREL_API VantrelStatus VantrelClientFileClose(VantrelClient *client, VantrelFile *file);

/* The status of the last operation on the file, which stays; VANTREL_STATUS_FILE_NOT_OPEN for null. */
VANTREL_API VantrelStatus VantrelFileGetLastStatusCode(const VantrelFile *file);

/* FILE DELETE AND RENAME
 *
 * By name, while nobody has the file open. Statuses are kept in the client; a null client or name gives
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER. From the engine come VANTREL_STATUS_FILE_NOT_FOUND,
 * VANTREL_STATUS_FILE_NAME_BAD, VANTREL_STATUS_FILE_IN_USE while anybody has the file open,
 * VANTREL_STATUS_PERMISSION_ERROR without the right to change the directory,
 * VANTREL_STATUS_OPERATION_NOT_ALLOWED inside a transaction, and VANTREL_STATUS_NOT_A_VANTREL_FILE for
 * something else under that name. */

/* Deletes the file. */
VANTREL_API VantrelStatus VantrelClientFileDelete(VantrelClient *client, const char *fileName);
VANTREL_API VantrelStatus VantrelClientFileDeleteW(VantrelClient *client, const wchar_t *fileName);

/* Gives the file another name. An existing file of that name is not replaced: it gives
 * VANTREL_STATUS_FILE_ALREADY_EXISTS. */
VANTREL_API VantrelStatus VantrelClientFileRename(VantrelClient *client, const char *existingName,
                                                  const char *newName);
VANTREL_API VantrelStatus VantrelClientFileRenameW(VantrelClient *client, const wchar_t *existingName,
                                                   const wchar_t *newName);

/* VERSION
 *
 * A version record receives what the engine tells of three components: the client's side, the local engine
 * and the remote one. A component that is not in use has zeros and the type VANTREL_VERSION_TYPE_NONE, as has
 * each of a record that was never filled. */

/* Allocates a record that was never filled; fails as all allocations do. */
VANTREL_API VantrelStatus VantrelVersionAllocate(VantrelVersion **version);

/* Frees the record; null is harmless. Returns 0. */
VANTREL_API VantrelStatus VantrelVersionFree(VantrelVersion *version);

/* Fills the record: with the versions of the engine that serves the file, or of the engine at hand where the
 * file is null. The status is kept in the client, not in the record. A null client and a file without a
 * client give VANTREL_STATUS_INVALID_POINTER_PARAMETER, the file of another client
 * VANTREL_STATUS_INVALID_OPTION. A null record is not refused here: it goes to the engine. */
VANTREL_API VantrelStatus VantrelClientGetVersion(VantrelClient *client, VantrelVersion *version,
                                                  VantrelFile *file);

/* The numbers of a component, 0 to 65535; -1 for null. */
VANTREL_API int32_t VantrelVersionGetClientVersionNumber(VantrelVersion *version);
VANTREL_API int32_t VantrelVersionGetClientRevisionNumber(VantrelVersion *version);
VANTREL_API int32_t VantrelVersionGetLocalVersionNumber(VantrelVersion *version);
VANTREL_API int32_t VantrelVersionGetLocalRevisionNumber(VantrelVersion *version);
VANTREL_API int32_t VantrelVersionGetRemoteVersionNumber(VantrelVersion *version);
VANTREL_API int32_t VantrelVersionGetRemoteRevisionNumber(VantrelVersion *version);

/* The type of a component; -7 for null, and with VANTREL_STATUS_INVALID_OPTION for one that is not known. */
VANTREL_API VantrelVersionType VantrelVersionGetClientVersionType(VantrelVersion *version);
VANTREL_API VantrelVersionType VantrelVersionGetLocalVersionType(VantrelVersion *version);
VANTREL_API VantrelVersionType VantrelVersionGetRemoteVersionType(VantrelVersion *version);

/* The record's last status, which stays; VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelVersionGetLastStatusCode(const VantrelVersion *version);

/* KEY SEGMENT
 *
 * One field of the record that takes part in an index: where it lies, how it compares, and when it is null.
 * Segments are added to index attributes, which copy them; segments read back from a file with
 * VantrelFileInformationGetKeySegment also carry what the index decides for all of its segments. */

/* Allocates a key segment of offset -1, length 0, type VANTREL_DATA_TYPE_LEGACY_STRING, ascending order and
 * VANTREL_NULL_KEY_MODE_NONE. Freeing takes null too and returns 0. */
VANTREL_API VantrelStatus VantrelKeySegmentAllocate(VantrelKeySegment **segment);
VANTREL_API VantrelStatus VantrelKeySegmentFree(VantrelKeySegment *segment);

/* Sets which bytes of the record the segment covers, and their type. The offset counts from 0, the length is
 * 0 to 1024, and their sum is at most 65535; the type is any VantrelDataType. Offset 65535 with length 0 is
 * accepted, but VantrelKeySegmentGetOffset then gives -1.
 *
 * Returns VANTREL_STATUS_INVALID_OPTION for a place or type out of range; an unknown type has then replaced a
 * legacy one by the extended type set last. */
VANTREL_API VantrelStatus VantrelKeySegmentSetField(VantrelKeySegment *segment, int32_t offset,
                                                    int32_t length, VantrelDataType dataType);

/* Sets whether records are left out of the index when this segment is null, that is when all its bytes have
 * the null value (0 to 255, at first 0). VANTREL_STATUS_INVALID_OPTION for values out of range. */
VANTREL_API VantrelStatus VantrelKeySegmentSetNullKeyMode(VantrelKeySegment *segment,
                                                          VantrelNullKeyMode mode);
VANTREL_API VantrelStatus VantrelKeySegmentSetNullValue(VantrelKeySegment *segment, int32_t value);

/* Sorts by this segment from the highest value to the lowest (nonzero) or the other way (0). */
VANTREL_API VantrelStatus VantrelKeySegmentSetDescendingSortOrder(VantrelKeySegment *segment,
                                                                  int32_t isDescending);

/* What the setters above set. The getters of types and modes fail with VANTREL_STATUS_INVALID_OPTION where
 * the engine reported bits that stand for none. The sort order is 0 or 1. */
VANTREL_API int32_t VantrelKeySegmentGetOffset(VantrelKeySegment *segment);
VANTREL_API int32_t VantrelKeySegmentGetLength(VantrelKeySegment *segment);
VANTREL_API VantrelDataType VantrelKeySegmentGetDataType(VantrelKeySegment *segment);
VANTREL_API VantrelNullKeyMode VantrelKeySegmentGetNullKeyMode(VantrelKeySegment *segment);
VANTREL_API int32_t VantrelKeySegmentGetNullValue(VantrelKeySegment *segment);
VANTREL_API int32_t VantrelKeySegmentGetDescendingSortOrder(VantrelKeySegment *segment);

/* Properties of the index, the same in all its segments; see VantrelIndexAttributes. They mean something in
 * segments read back from a file. "Modifiable" is 0 or 1, the ACS number 0 to 255. */
VANTREL_API VantrelDuplicateMode VantrelKeySegmentGetDuplicateMode(VantrelKeySegment *segment);
VANTREL_API int32_t VantrelKeySegmentGetModifiable(VantrelKeySegment *segment);
VANTREL_API VantrelACSMode VantrelKeySegmentGetACSMode(VantrelKeySegment *segment);
VANTREL_API int32_t VantrelKeySegmentGetACSNumber(VantrelKeySegment *segment);

/* For segments read back from a file: whether another segment of the same index follows (0 or 1), the index
 * that the segment belongs to, and how many different keys the index holds. */
VANTREL_API int32_t VantrelKeySegmentGetKeyContinues(VantrelKeySegment *segment);
VANTREL_API VantrelIndex VantrelKeySegmentGetIndex(VantrelKeySegment *segment);
VANTREL_API int64_t VantrelKeySegmentGetUniqueValueCount(VantrelKeySegment *segment);

/* The segment's last status, which stays; VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelKeySegmentGetLastStatusCode(const VantrelKeySegment *segment);

/* INDEX ATTRIBUTES
 *
 * An index to be created with a file or added to one: its segments in the order in which they compare, and
 * what holds for all of them. Settings can be replaced but segments not removed. The functions return their
 * status; it cannot be asked for afterwards. */

/* Allocates index attributes without segments and collation: duplicates not allowed, keys modifiable, index
 * number chosen by the engine. Freeing takes null too and returns 0. */
VANTREL_API VantrelStatus VantrelIndexAttributesAllocate(VantrelIndexAttributes **attributes);
VANTREL_API VantrelStatus VantrelIndexAttributesFree(VantrelIndexAttributes *attributes);

/* Appends a copy of the segment; changing or freeing the segment afterwards does not change the index. An
 * index holds up to 420 segments: one more gives VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE. */
VANTREL_API VantrelStatus VantrelIndexAttributesAddKeySegment(VantrelIndexAttributes *attributes,
                                                              const VantrelKeySegment *segment);

/* Asks for an index number instead of leaving it to the engine, which cannot be taken back. Every
 * VantrelIndex is accepted, though the engine gives new indexes the numbers 0 to 118 only;
 * VANTREL_STATUS_INVALID_OPTION for anything else. VANTREL_INDEX_NONE too is sent on as it is: to a file
 * create it then means VANTREL_CREATE_MODE_NO_OVERWRITE at VANTREL_LOCATION_MODE_DEFAULT. */
VANTREL_API VantrelStatus VantrelIndexAttributesSetIndex(VantrelIndexAttributes *attributes,
                                                         VantrelIndex index);

/* Whether records may have equal keys; VANTREL_STATUS_INVALID_OPTION for no VantrelDuplicateMode. */
VANTREL_API VantrelStatus VantrelIndexAttributesSetDuplicateMode(VantrelIndexAttributes *attributes,
                                                                 VantrelDuplicateMode mode);

/* Whether an update may change a record's key (nonzero) or not (0). */
VANTREL_API VantrelStatus VantrelIndexAttributesSetModifiable(VantrelIndexAttributes *attributes,
                                                              int32_t isModifiable);

/* The alternate collating sequence by which text in the index compares; each of these four functions replaces
 * what another one has chosen. It is a sequence that the engine knows by name (at most 16 characters); one
 * defined here, a name (at most 8 characters) and the 256 bytes that the byte values 0 to 255 sort as; one
 * that the engine knows by number (0 to 255); or VANTREL_ACS_MODE_NONE, _CASE_INSENSITIVE or _DEFAULT, the
 * only modes that need neither name nor number.
 *
 * A longer name or another length of the table gives VANTREL_STATUS_DATA_LENGTH_ERROR, another number or mode
 * VANTREL_STATUS_INVALID_OPTION. */
VANTREL_API VantrelStatus VantrelIndexAttributesSetACSName(VantrelIndexAttributes *attributes,
                                                           const char *name);
VANTREL_API VantrelStatus VantrelIndexAttributesSetACSUserDefined(VantrelIndexAttributes *attributes,
                                                                  const char *name, const void *table,
                                                                  int32_t tableLength);
VANTREL_API VantrelStatus VantrelIndexAttributesSetACSNumber(VantrelIndexAttributes *attributes,
                                                             int32_t number);
VANTREL_API VantrelStatus VantrelIndexAttributesSetACSMode(VantrelIndexAttributes *attributes,
                                                           VantrelACSMode mode);

/* FILE ATTRIBUTES
 *
 * A file to be created: the length of its records and options that hold for the whole file. The functions
 * return their status, which is VANTREL_STATUS_INVALID_OPTION for a value out of range; it cannot be asked
 * for afterwards. */

/* Allocates file attributes: records of length 0, pages of 4096 bytes, the engine's default version and no
 * option set. Freeing takes null too and returns 0. */
VANTREL_API VantrelStatus VantrelFileAttributesAllocate(VantrelFileAttributes **attributes);
VANTREL_API VantrelStatus VantrelFileAttributesFree(VantrelFileAttributes *attributes);

/* The length of a record, or where records vary in length of its fixed part: 0 to 65535 bytes. */
VANTREL_API VantrelStatus VantrelFileAttributesSetFixedRecordLength(VantrelFileAttributes *attributes,
                                                                    int32_t length);

/* The page size, of which the default is 4096 bytes, and whether pages are compressed (nonzero) or not. */
VANTREL_API VantrelStatus VantrelFileAttributesSetPageSize(VantrelFileAttributes *attributes,
                                                           VantrelPageSize pageSize, int32_t isCompressed);

/* The version of the file format, at first VANTREL_FILE_VERSION_DEFAULT. */
VANTREL_API VantrelStatus VantrelFileAttributesSetFileVersion(VantrelFileAttributes *attributes,
                                                              VantrelFileVersion version);

/* Room in every record for the duplicates of so many indexes added later, 0 to 255. */
VANTREL_API VantrelStatus
VantrelFileAttributesSetReservedDuplicatePointerCount(VantrelFileAttributes *attributes, int32_t count);

/* Pages whose space is reserved at once, 0 to 65535. */
VANTREL_API VantrelStatus VantrelFileAttributesSetPreallocatedPageCount(VantrelFileAttributes *attributes,
                                                                        int32_t count);

/* How records are compressed, at first VANTREL_RECORD_COMPRESSION_MODE_NONE. */
VANTREL_API VantrelStatus VantrelFileAttributesSetRecordCompressionMode(VantrelFileAttributes *attributes,
                                                                        VantrelRecordCompressionMode mode);

/* Whether indexes are kept balanced (nonzero) or not (0). */
VANTREL_API VantrelStatus VantrelFileAttributesSetBalancedIndexes(VantrelFileAttributes *attributes,
                                                                  int32_t areBalanced);

/* Whether the file has the system indexes over the times of its records. */
VANTREL_API VantrelStatus VantrelFileAttributesSetSystemDataMode(VantrelFileAttributes *attributes,
                                                                 VantrelSystemDataMode mode);

/* Whether records may be longer than the fixed length. */
VANTREL_API VantrelStatus VantrelFileAttributesSetVariableLengthRecordsMode(
    VantrelFileAttributes *attributes, VantrelVariableLengthRecordsMode mode);

/* How much of a page is kept free for records that grow, at first VANTREL_FREE_SPACE_THRESHOLD_DEFAULT. */
VANTREL_API VantrelStatus VantrelFileAttributesSetFreeSpaceThreshold(VantrelFileAttributes *attributes,
                                                                     VantrelFreeSpaceThreshold threshold);

/* Whether records are reached through the file's indexes alone (nonzero): such a file has no physical order,
 * its records have a fixed length, and one of its indexes takes all of them. */
VANTREL_API VantrelStatus VantrelFileAttributesSetKeyOnly(VantrelFileAttributes *attributes,
                                                          int32_t isKeyOnly);

/* FILE CREATE
 *
 * Creating a file does not open it. The engine refuses
 * - the name or the place: VANTREL_STATUS_FILE_ALREADY_EXISTS where an existing file is not to be replaced,
 *   VANTREL_STATUS_FILE_IN_USE where it is open anywhere, VANTREL_STATUS_NOT_A_VANTREL_FILE where it is a
 *   file of another kind, VANTREL_STATUS_FILE_NAME_BAD, VANTREL_STATUS_FILE_NOT_FOUND for a directory that
 *   does not exist, VANTREL_STATUS_PERMISSION_ERROR, VANTREL_STATUS_OPERATION_NOT_ALLOWED inside a
 *   transaction, VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE for a remote location without a server;
 * - the file: VANTREL_STATUS_PAGE_SIZE_ERROR, VANTREL_STATUS_INVALID_RECORD_LENGTH,
 *   VANTREL_STATUS_NUMBER_OF_INDEXES;
 * - an index: VANTREL_STATUS_INVALID_INDEX_NUMBER above 118, VANTREL_STATUS_INVALID_KEY_POSITION for a
 *   segment outside the fixed part of the record, VANTREL_STATUS_INVALID_KEY_LENGTH for a segment or key of a
 *   length that its type does not have, VANTREL_STATUS_INCONSISTENT_KEY_FLAGS, VANTREL_STATUS_KEY_TYPE_ERROR,
 *   VANTREL_STATUS_INVALID_ALTERNATE_COLLATING_SEQUENCE_DEFINITION for a damaged collating sequence and
 *   VANTREL_STATUS_ALTERNATE_COLLATING_SEQUENCE_NOT_FOUND for an unknown one. */

/* Creates a file with the index that the index attributes describe, or without one where they are null.
 *
 * The attributes can be used again: the file attributes then hold this index, and the segments of the index
 * attributes its settings. File attributes that have carried an index are not fit for a file without one,
 * since their count of indexes stays 1. An index number set with VantrelIndexAttributesSetIndex is sent in
 * the place of both modes, which are checked but then up to the engine.
 *
 * A null client, file name or file attributes give VANTREL_STATUS_INVALID_POINTER_PARAMETER, an unknown mode
 * VANTREL_STATUS_INVALID_OPTION, an index too large for the request VANTREL_STATUS_DATA_LENGTH_ERROR. */
VANTREL_API VantrelStatus VantrelClientFileCreate(VantrelClient *client,
                                                  VantrelFileAttributes *fileAttributes,
                                                  VantrelIndexAttributes *indexAttributes,
                                                  const char *fileName, VantrelCreateMode createMode,
                                                  VantrelLocationMode locationMode);
VANTREL_API VantrelStatus VantrelClientFileCreateW(VantrelClient *client,
                                                   VantrelFileAttributes *fileAttributes,
                                                   VantrelIndexAttributes *indexAttributes,
                                                   const wchar_t *fileName, VantrelCreateMode createMode,
                                                   VantrelLocationMode locationMode);

/* Creates an empty file with the attributes and all the indexes of the file that the file information was
 * taken from with VantrelFileGetInformation. Statuses are those above, that of null file information
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER, which the client keeps, and VANTREL_STATUS_DATA_LENGTH_ERROR
 * where an engine claimed more than 65535 bytes of statistics. Information that was never filled, or whose
 * statistics failed, is sent as it is and refused by the engine. */
VANTREL_API VantrelStatus VantrelClientFileCreateUsingFileInformation(VantrelClient *client,
                                                                      VantrelFileInformation *fileInformation,
                                                                      const char *fileName,
                                                                      VantrelCreateMode createMode,
                                                                      VantrelLocationMode locationMode);
VANTREL_API VantrelStatus VantrelClientFileCreateUsingFileInformationW(
    VantrelClient *client, VantrelFileInformation *fileInformation, const wchar_t *fileName,
    VantrelCreateMode createMode, VantrelLocationMode locationMode);

/* INDEX CREATE AND DROP
 *
 * Indexes can be added to an open file and taken away again. */

/* Adds an index over the records that the file holds. Its number is the one set in the attributes, else the
 * engine's choice. A named or user-defined collating sequence that the engine does not find is asked for once
 * more as a numbered one, and the second status is the result. The settings of the attributes are written to
 * their segments, which changes nothing for their next use.
 *
 * A null file gives VANTREL_STATUS_FILE_NOT_OPEN; null attributes, or a file without a client,
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER; too many segments VANTREL_STATUS_DATA_LENGTH_ERROR. From the
 * engine come VANTREL_STATUS_DUPLICATE_KEY_VALUE where the records have a key twice that the index allows
 * once, with nothing changed; VANTREL_STATUS_INVALID_INDEX_NUMBER for a number above 118 or in use;
 * VANTREL_STATUS_NUMBER_OF_INDEXES where the file can have no more; VANTREL_STATUS_OPERATION_NOT_ALLOWED
 * inside a transaction; VANTREL_STATUS_FILE_IN_USE where another session's transaction holds the file;
 * VANTREL_STATUS_ACCESS_TO_FILE_DENIED through a handle opened read-only; and the statuses of an index with
 * which a file is created. */
VANTREL_API VantrelStatus VantrelFileIndexCreate(VantrelFile *file, VantrelIndexAttributes *attributes);

/* Drops an index; the others keep their numbers. A null file gives VANTREL_STATUS_FILE_NOT_OPEN, a file
 * without a client VANTREL_STATUS_INVALID_POINTER_PARAMETER, a value that is no index
 * VANTREL_STATUS_INVALID_OPTION. From the engine come VANTREL_STATUS_INVALID_INDEX_NUMBER for an index that
 * the file does not have, and VANTREL_STATUS_OPERATION_NOT_ALLOWED, VANTREL_STATUS_FILE_IN_USE and
 * VANTREL_STATUS_ACCESS_TO_FILE_DENIED as above. */
VANTREL_API VantrelStatus VantrelFileIndexDrop(VantrelFile *file, VantrelIndex index);

/* RECORDS
 *
 * One request inserts, reads, changes or deletes one record of an open file, or reads a key without its
 * record. The file has a current record, the one read or inserted last, which update, delete, the chunk
 * functions and the functions for its position and times refer to. The file also remembers the order that
 * the last read went by, an index or the physical order, and the key it found: next and previous go on from
 * there, whatever read it was. */

/* Inserts the record, recordLength bytes long (0 to 65535). A zero in the key field of an autoincrement index
 * or of an automatic timestamp is replaced by its value, in the caller's record as well. A null record with a
 * length above 0 goes to the engine unchecked.
 *
 * Returns and keeps in the file VANTREL_STATUS_INVALID_OPTION for a longer record; from the engine
 * VANTREL_STATUS_DUPLICATE_KEY_VALUE where an index without duplicates has the key already,
 * VANTREL_STATUS_DATA_LENGTH_ERROR where the file's records have another length, and
 * VANTREL_STATUS_INVALID_INDEX_NUMBER where the last read named an index that does not exist. The index that
 * next and previous follow stays; the new record's key takes the place of the key found last. */
VANTREL_API VantrelStatus VantrelFileRecordCreate(VantrelFile *file, void *record, uint32_t recordLength);

/* Reads the record that a key leads to.
 *
 * comparison is VANTREL_COMPARISON_EQUAL, _GREATER, _LESS, _GREATER_OR_EQUAL or _LESS_OR_EQUAL; index is an
 * index of the file, handed to the engine unchecked. key holds the value looked for and receives the value
 * found: keyLength bytes (0 or more), of which the first 1024 take part. record receives at most recordSize
 * bytes (0 to 65535); with a null record, the size 0 and no lock mode, the key alone is read. A null record
 * with a size above 0 goes to the engine unchecked.
 *
 * Returns the number of bytes in the record (0 where the key alone was read), or -1. Keeps in the file 0;
 * VANTREL_STATUS_DATA_LENGTH_ERROR where the record was cut to the size, which is no failure: its number of
 * bytes is returned; VANTREL_STATUS_KEY_VALUE_NOT_FOUND (_EQUAL) or VANTREL_STATUS_END_OF_FILE (the others)
 * where there is no such key; VANTREL_STATUS_INVALID_INDEX_NUMBER for an index that the file does not have;
 * VANTREL_STATUS_KEY_BUFFER_TOO_SHORT for a keyLength below the length of its key;
 * VANTREL_STATUS_RECORD_IN_USE where another session has locked the record;
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null key; VANTREL_STATUS_INVALID_OPTION for another
 * comparison, size, key length or lock mode, or for a lock on a key alone. A null file gives -1. */
VANTREL_API int32_t VantrelFileRecordRetrieve(VantrelFile *file, VantrelComparison comparison,
                                              VantrelIndex index, void *key, int32_t keyLength, void *record,
                                              int32_t recordSize, VantrelLockMode lockMode);

/* Replaces the current record by recordLength bytes (0 to 65535); the place of next and previous stays. A
 * null record with a length above 0 goes to the engine unchecked.
 *
 * Returns and keeps in the file VANTREL_STATUS_INVALID_OPTION for a longer record; from the engine
 * VANTREL_STATUS_POSITION_NOT_SET without a current record, VANTREL_STATUS_CONFLICT where another session
 * changed the record since it was read, VANTREL_STATUS_RECORD_IN_USE where another session has locked it,
 * VANTREL_STATUS_MODIFIABLE_KEY_VALUE_ERROR where the key of an index that allows no change would change,
 * and the statuses of an insert. */
VANTREL_API VantrelStatus VantrelFileRecordUpdate(VantrelFile *file, const void *record,
                                                  uint32_t recordLength);

/* Deletes the current record. Returns and keeps the engine's status in the file, such as
 * VANTREL_STATUS_POSITION_NOT_SET without a current record, VANTREL_STATUS_CONFLICT and
 * VANTREL_STATUS_RECORD_IN_USE as for an update. */
VANTREL_API VantrelStatus VantrelFileRecordDelete(VantrelFile *file);

/* Read a key without its record and without a lock: the one that a key leads to, as
 * VantrelFileRecordRetrieve finds it; the first or last of an index; the next or previous of the index used
 * last.
 *
 * key receives the value, keyLength bytes (0 or more) of which the first 1024 take part. It is read as well:
 * for next and previous it must still hold the value that the call before gave.
 *
 * The index goes to the engine unchecked. There is no form for the physical order: first and last send
 * VANTREL_INDEX_NONE as it is, and so do next and previous after a read in physical order or right after
 * opening.
 *
 * Return and keep in the file VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null key;
 * VANTREL_STATUS_INVALID_OPTION for a negative length, and for a comparison that VantrelFileRecordRetrieve
 * does not know, where the value returned is -1; from the engine VANTREL_STATUS_KEY_VALUE_NOT_FOUND or
 * VANTREL_STATUS_END_OF_FILE where there is no such key, VANTREL_STATUS_INVALID_INDEX_NUMBER for an index
 * that the file does not have (first and last: VANTREL_INDEX_NONE too), VANTREL_STATUS_KEY_BUFFER_TOO_SHORT
 * for a search with too short a key, and for next and previous VANTREL_STATUS_DIFFERENT_INDEX_NUMBER and
 * VANTREL_STATUS_POSITION_NOT_SET (VANTREL_INDEX_NONE too), as VantrelFileRecordRetrieveNext explains. */
VANTREL_API VantrelStatus VantrelFileKeyRetrieve(VantrelFile *file, VantrelComparison comparison,
                                                 VantrelIndex index, void *key, int32_t keyLength);
VANTREL_API VantrelStatus VantrelFileKeyRetrieveFirst(VantrelFile *file, VantrelIndex index, void *key,
                                                      int32_t keyLength);
VANTREL_API VantrelStatus VantrelFileKeyRetrieveLast(VantrelFile *file, VantrelIndex index, void *key,
                                                     int32_t keyLength);
VANTREL_API VantrelStatus VantrelFileKeyRetrieveNext(VantrelFile *file, void *key, int32_t keyLength);
VANTREL_API VantrelStatus VantrelFileKeyRetrievePrevious(VantrelFile *file, void *key, int32_t keyLength);

/* NAVIGATION AND CURSOR POSITIONS
 *
 * These functions step through an index or the physical order, and go straight back to a record whose cursor
 * position was asked for earlier. */

/* Read the first or last record of an index, or of the physical order for VANTREL_INDEX_NONE; other indexes
 * are handed to the engine unchecked. Next and previous then follow the same order.
 *
 * key may be null; otherwise it is read and receives the record's key, keyLength bytes (0 or more) of which
 * the first 1024 take part. record receives at most recordSize bytes (0 to 65535); with a null record, the
 * size 0 and no lock mode, the key alone is read. A null record with a size above 0 goes to the engine
 * unchecked.
 *
 * Return the number of bytes in the record, or -1. Keep in the file 0; VANTREL_STATUS_DATA_LENGTH_ERROR where
 * the record was cut to the size, which is no failure; VANTREL_STATUS_END_OF_FILE in an empty order;
 * VANTREL_STATUS_INVALID_INDEX_NUMBER for an index that the file does not have; VANTREL_STATUS_RECORD_IN_USE
 * where another session has locked the record; VANTREL_STATUS_INVALID_OPTION for a size, key length or lock
 * mode out of range or a lock on a key alone. A null file gives -1. */
VANTREL_API int32_t VantrelFileRecordRetrieveFirst(VantrelFile *file, VantrelIndex index, void *key,
                                                   int32_t keyLength, void *record, int32_t recordSize,
                                                   VantrelLockMode lockMode);
VANTREL_API int32_t VantrelFileRecordRetrieveLast(VantrelFile *file, VantrelIndex index, void *key,
                                                  int32_t keyLength, void *record, int32_t recordSize,
                                                  VantrelLockMode lockMode);

/* Read the next or previous record in the order used last, with arguments and results as above. With a null
 * key they go on from the key found last; a key given must still hold the value that the call before gave.
 *
 * VANTREL_STATUS_END_OF_FILE is past either end; VANTREL_STATUS_POSITION_NOT_SET is no place to go on from,
 * as right after opening, where no order has been used; VANTREL_STATUS_DIFFERENT_INDEX_NUMBER is a place in
 * another index than the one named last, as after VantrelFileGetPercentage in another index. */
VANTREL_API int32_t VantrelFileRecordRetrieveNext(VantrelFile *file, void *key, int32_t keyLength,
                                                  void *record, int32_t recordSize, VantrelLockMode lockMode);
VANTREL_API int32_t VantrelFileRecordRetrievePrevious(VantrelFile *file, void *key, int32_t keyLength,
                                                      void *record, int32_t recordSize,
                                                      VantrelLockMode lockMode);

/* The cursor position of the current record, or -1 with the engine's status kept in the file
 * (VANTREL_STATUS_POSITION_NOT_SET without a current record). A null file gives -1. */
VANTREL_API VantrelCursorPosition VantrelFileGetCursorPosition(VantrelFile *file);

/* Reads the record at a cursor position, and goes on from it in the order of an index, or in the physical
 * order for VANTREL_INDEX_NONE.
 *
 * index is -1 to 118, 124 or 125. key may be null; otherwise it receives the record's key of that index,
 * keyLength bytes (0 or more) of which the first 1024 take part. record receives at most recordSize bytes (0
 * to 65535) and may be null only for the size 0. There is no form that reads the key alone: the lock is
 * taken with any size.
 *
 * Returns the number of bytes in the record, or -1. Keeps in the file 0; VANTREL_STATUS_DATA_LENGTH_ERROR
 * where the record was cut to the size, which is no failure; VANTREL_STATUS_INVALID_RECORD_ADDRESS where
 * there is no record; VANTREL_STATUS_NULL_KEY_PATH where the index leaves the record out, since its key is
 * null; VANTREL_STATUS_INVALID_INDEX_NUMBER for an index that the file does not have;
 * VANTREL_STATUS_RECORD_IN_USE where another session has locked the record; VANTREL_STATUS_INVALID_OPTION for
 * an index, size, key length or lock mode out of range; VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null
 * record of another size than 0. A null file gives -1. */
VANTREL_API int32_t VantrelFileRecordRetrieveByCursorPosition(VantrelFile *file, VantrelIndex index,
                                                              VantrelCursorPosition cursorPosition, void *key,
                                                              int32_t keyLength, void *record,
                                                              int32_t recordSize, VantrelLockMode lockMode);

/* CHUNKS
 *
 * Chunks are byte ranges of the current record: they are read and changed without moving the whole record,
 * which may be far longer than 65535 bytes. An offset counts from the start of the record; -1 continues
 * where the last chunk operation ended. Ranges above 257024 bytes are moved in pieces of that
 * size, one request each. */

/* Reads a range of the current record: length bytes, but no more than bufferSize, into the buffer; fewer
 * where the record ends before. The offset -1 reads on in the record that was last read at an offset through
 * this handle, whichever is current, and makes it current. lockMode locks the record as any read does. A null
 * buffer goes to the engine unchecked.
 *
 * Returns the number of bytes read, or -1. Only the status kept in the file tells whether the engine failed:
 * 0 for success; VANTREL_STATUS_CHUNK_OFFSET_TOO_LONG for a start behind the end of the record;
 * for the offset -1 VANTREL_STATUS_CHUNK_CANNOT_GET_NEXT where the last chunk operation was on another record
 * than the one last read at an offset, and VANTREL_STATUS_INVALID_RECORD_ADDRESS, with -1, where there is no
 * such record or no more; without a current record -1 with VANTREL_STATUS_POSITION_NOT_SET;
 * VANTREL_STATUS_RECORD_IN_USE where another session has locked the record. VANTREL_STATUS_INVALID_OPTION,
 * with -1, is kept for an offset below -1, a negative length or size and an unknown lock mode. Where a piece
 * of a long range comes up short, the number of bytes in that piece alone is returned, unless it is the last.
 * A null file gives -1. */
VANTREL_API int32_t VantrelFileRecordRetrieveChunk(VantrelFile *file, int32_t offset, int32_t length,
                                                   void *buffer, int32_t bufferSize,
                                                   VantrelLockMode lockMode);

/* Change the current record: overwrite length bytes at the offset, insert that many before it, delete that
 * many from it, or append that many to the end of the record. data holds length bytes and is handed to the
 * engine unchecked.
 *
 * Return and keep in the file VANTREL_STATUS_INVALID_OPTION for an offset below -1 or a negative length;
 * from the engine VANTREL_STATUS_CHUNK_OFFSET_TOO_LONG for a start behind the end of the record,
 * VANTREL_STATUS_CHUNK_CANNOT_GET_NEXT for the offset -1 without a chunk operation on the record before,
 * VANTREL_STATUS_CHUNK_OFFSET_TOO_SMALL for inserting or deleting in its fixed part,
 * VANTREL_STATUS_CHUNK_INCOMPATIBLE_FILE where records have a fixed length, and those of an update. A long
 * range that fails ends there: the pieces before have been changed. */
VANTREL_API VantrelStatus VantrelFileRecordUpdateChunk(VantrelFile *file, int32_t offset, const void *data,
                                                       int32_t length);
VANTREL_API VantrelStatus VantrelFileRecordInsertChunk(VantrelFile *file, int32_t offset, const void *data,
                                                       int32_t length);
VANTREL_API VantrelStatus VantrelFileRecordDeleteChunk(VantrelFile *file, int32_t offset, int32_t length);
VANTREL_API VantrelStatus VantrelFileRecordAppendChunk(VantrelFile *file, const void *data, int32_t length);

/* Cuts the current record off at the offset, which is handed to the engine unchecked. Returns and keeps the
 * engine's status in the file, as the functions above do. */
VANTREL_API VantrelStatus VantrelFileRecordTruncate(VantrelFile *file, int32_t offset);

/* PERCENTAGE, FRACTION AND RECORD TIMES
 *
 * A record's place in an index, or in the physical order, as a part of the whole: in hundredths of a
 * percent, 0 to 10000, or as a numerator over a denominator of the caller's. The engine computes and checks
 * them. */

/* Tell how far into an index, or into the physical order for VANTREL_INDEX_NONE, the record at a cursor
 * position lies.
 *
 * index is -1 to 118, 124 or 125, and becomes the order that next and previous follow. key holds the record's
 * key in that index, which the engine needs to find its place, and is filled again: keyLength bytes, of which
 * the first 1024 take part. Null stands for the key found last.
 *
 * Return the percentage or numerator, or -1. Keep in the file VANTREL_STATUS_INVALID_OPTION for an index out
 * of range, otherwise the engine's status: VANTREL_STATUS_INVALID_RECORD_ADDRESS where there is no record,
 * VANTREL_STATUS_OPERATION_NOT_ALLOWED for the denominator 0. A null file gives -1. */
VANTREL_API int32_t VantrelFileGetPercentage(VantrelFile *file, VantrelIndex index, void *key,
                                             uint32_t keyLength, VantrelCursorPosition cursorPosition);
VANTREL_API int32_t VantrelFileGetNumerator(VantrelFile *file, VantrelIndex index, void *key,
                                            uint32_t keyLength, VantrelCursorPosition cursorPosition,
                                            uint32_t denominator);

/* Read the record that lies that far into an index or the physical order. The denominator 0 gives
 * VANTREL_STATUS_OPERATION_NOT_ALLOWED; all else is as with VantrelFileRecordRetrieveByCursorPosition. */
VANTREL_API int32_t VantrelFileRecordRetrieveByPercentage(VantrelFile *file, VantrelIndex index,
                                                          uint32_t percentage, void *key, int32_t keyLength,
                                                          void *record, int32_t recordSize,
                                                          VantrelLockMode lockMode);
VANTREL_API int32_t VantrelFileRecordRetrieveByFraction(VantrelFile *file, VantrelIndex index,
                                                        uint32_t numerator, uint32_t denominator, void *key,
                                                        int32_t keyLength, void *record, int32_t recordSize,
                                                        VantrelLockMode lockMode);

/* When the current record was created or last updated, or -1 with the engine's status kept in the file
 * (VANTREL_STATUS_POSITION_NOT_SET without a current record). -1 can be a time too; the status kept tells. A
 * null file gives -1. */
VANTREL_API VantrelTimestamp VantrelFileGetRecordCreateTime(VantrelFile *file);
VANTREL_API VantrelTimestamp VantrelFileGetRecordUpdateTime(VantrelFile *file);

/* UNLOCK AND OWNER
 *
 * Reads take locks on records as their lock mode says; these functions release them. An owner name keeps
 * those who do not know it out of a file. */

/* Releases the file handle's single lock or all its multiple locks. Returns and keeps in the file
 * VANTREL_STATUS_INVALID_OPTION for another mode, otherwise the engine's status. */
VANTREL_API VantrelStatus VantrelFileRecordUnlock(VantrelFile *file, VantrelUnlockMode unlockMode);

/* Releases the multiple lock on the record at the cursor position. Returns and keeps the engine's status in
 * the file. */
VANTREL_API VantrelStatus VantrelFileUnlockCursorPosition(VantrelFile *file,
                                                          VantrelCursorPosition cursorPosition);

/* Gives the file an owner name, or takes it away with VANTREL_OWNER_MODE_NONE, which ignores the other
 * arguments. The name is given twice, zero-terminated: 1 to 8 characters, or 1 to 24 with a true isLongName.
 *
 * Returns and keeps in the file VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null name;
 * VANTREL_STATUS_INVALID_OPTION for an unknown mode; from the engine VANTREL_STATUS_OWNER_ALREADY_SET, or
 * VANTREL_STATUS_INVALID_OWNER where the two names differ or are too long,
 * VANTREL_STATUS_ACCESS_TO_FILE_DENIED through a read-only handle, VANTREL_STATUS_OPERATION_NOT_ALLOWED inside
 * a transaction, and VANTREL_STATUS_FILE_IN_USE where another session's transaction holds the file or, where the
 * content is to be encrypted or decrypted, another session has the file open. Open handles go on working. */
VANTREL_API VantrelStatus VantrelFileSetOwner(VantrelFile *file, VantrelOwnerMode ownerMode,
                                              const char *ownerName, const char *ownerNameAgain,
                                              int32_t isLongName);

/* FILTER
 *
 * A filter is one condition of a bulk retrieve or bulk delete: it compares a field of each record with a
 * constant or with another field of the same record. It is complete, and accepted by the bulk operations,
 * once its field, its comparison and its constant or other field are set, for a pattern comparison its
 * constant; attributes take copies of it, so
 * that it can then be changed or freed. Only the three functions that take a name keep a status in the
 * filter, and none reads it. */

/* A new filter has neither comparison nor constant nor other field, and VANTREL_CONNECTOR_LAST; its field is
 * 0 bytes of VANTREL_DATA_TYPE_CHAR at offset 0. */
VANTREL_API VantrelStatus VantrelFilterAllocate(VantrelFilter **filter);

/* Frees the filter and its constant; VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelFilterFree(VantrelFilter *filter);

/* Chooses the field to test. The offset is 0 to 65534, the length 0 to 65535, their sum at most 65535;
 * VANTREL_STATUS_INVALID_OPTION otherwise, nothing changed. A data type without a code in the engine gives
 * VANTREL_STATUS_INVALID_OPTION too, with offset and length already taken and the former type kept. */
VANTREL_API VantrelStatus VantrelFilterSetField(VantrelFilter *filter, uint32_t offset, uint32_t length,
                                                VantrelDataType dataType);

/* Chooses a field that the engine keeps with every record; its constant is a VantrelTimestamp of 8 bytes.
 * VANTREL_STATUS_INVALID_OPTION for a value that is no system field. */
VANTREL_API VantrelStatus VantrelFilterSetSystemField(VantrelFilter *filter, VantrelSystemField systemField);

/* Chooses the comparison, of all kinds. A value outside the enumeration gives VANTREL_STATUS_INVALID_OPTION;
 * a pattern comparison set before then loses its kind, and bulk operations refuse the filter until a
 * comparison is set again. */
VANTREL_API VantrelStatus VantrelFilterSetComparison(VantrelFilter *filter, VantrelComparison comparison);

/* Joins the filter to the one added after it; the last one keeps VANTREL_CONNECTOR_LAST, which a new filter
 * has. VANTREL_STATUS_INVALID_OPTION for any other value. */
VANTREL_API VantrelStatus VantrelFilterSetConnector(VantrelFilter *filter, VantrelConnector connector);

/* Compares with a copy of length bytes of the constant, 0 to 65535; null stands for zero bytes. The length
 * has to be that of the field when the filter is used. For a pattern comparison the constant is text up to
 * its first zero byte or its end, of any length up to 65534 bytes. A field to compare with is forgotten.
 *
 * Returns VANTREL_STATUS_INVALID_OPTION for a longer constant, nothing changed;
 * VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE, the constant set before then lost. */
VANTREL_API VantrelStatus VantrelFilterSetComparisonConstant(VantrelFilter *filter, const void *constant,
                                                             uint32_t length);

/* Compares with the field at the offset, 0 to 65534, of the same length and type; a constant is freed.
 * VANTREL_STATUS_INVALID_OPTION for a larger offset. */
VANTREL_API VantrelStatus VantrelFilterSetComparisonField(VantrelFilter *filter, uint32_t offset);

/* Compares text through a collating sequence, or a pattern in a code page, known to the engine by name: at
 * most 8 bytes for a user-defined sequence and 16 for the others, zero-terminated. Each of these functions
 * replaces what the others and VantrelFilterSetACSMode have set.
 *
 * Returns VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null name, kept in the filter;
 * VANTREL_STATUS_DATA_LENGTH_ERROR for a longer name, nothing changed. */
VANTREL_API VantrelStatus VantrelFilterSetACSUserDefined(VantrelFilter *filter, const char *name);
VANTREL_API VantrelStatus VantrelFilterSetACSName(VantrelFilter *filter, const char *name);
VANTREL_API VantrelStatus VantrelFilterSetLikeCodePageName(VantrelFilter *filter, const char *name);

/* Compares text as it stands, without regard to case, or through the default sequence:
 * VANTREL_ACS_MODE_NONE, _CASE_INSENSITIVE and _DEFAULT. The named and numbered modes and all other values
 * give VANTREL_STATUS_INVALID_OPTION, nothing changed. */
VANTREL_API VantrelStatus VantrelFilterSetACSMode(VantrelFilter *filter, VantrelACSMode mode);

/* BULK ATTRIBUTES
 *
 * Bulk attributes say what a bulk operation does: which records it takes, at most how many, where it starts
 * and, for a retrieve, which bytes of each record come back. They are filled once and serve any number of
 * calls. The functions return their status; only that of a null filter is kept, and none reads it. */

/* A new record takes every record, at most 25804, sets no reject limit, and starts at the current record. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAllocate(VantrelBulkRetrieveAttributes **attributes);
VANTREL_API VantrelStatus VantrelBulkDeleteAttributesAllocate(VantrelBulkDeleteAttributes **attributes);

/* Frees the attributes with their copies of filters; null is harmless. Returns 0. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesFree(VantrelBulkRetrieveAttributes *attributes);
VANTREL_API VantrelStatus VantrelBulkDeleteAttributesFree(VantrelBulkDeleteAttributes *attributes);

/* Adds a copy of the filter behind those already there; its connector joins it to the next. Filters are not
 * checked before a bulk operation uses them.
 *
 * Returns VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null filter, kept in the attributes;
 * VANTREL_STATUS_FILTER_LIMIT_EXCEEDED for more than 128; or
 * VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE where the constant cannot be copied. Nothing is added
 * then. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddFilter(VantrelBulkRetrieveAttributes *attributes,
                                                                 const VantrelFilter *filter);
VANTREL_API VantrelStatus VantrelBulkDeleteAttributesAddFilter(VantrelBulkDeleteAttributes *attributes,
                                                               const VantrelFilter *filter);

/* At most how many records one call returns or deletes, 1 to 25804; VANTREL_STATUS_INVALID_OPTION otherwise.
 * A retrieve further lowers it to the number of records of the extracted length that a result holds. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesSetMaximumRecordCount(
    VantrelBulkRetrieveAttributes *attributes, uint32_t count);
VANTREL_API VantrelStatus VantrelBulkDeleteAttributesSetMaximumRecordCount(
    VantrelBulkDeleteAttributes *attributes, uint32_t count);

/* After how many records that fail the filters a call ends with VANTREL_STATUS_REJECT_COUNT_REACHED, 0 to
 * 65535; 0 leaves the limit to the engine. VANTREL_STATUS_INVALID_OPTION for a larger count. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesSetMaximumRejectCount(
    VantrelBulkRetrieveAttributes *attributes, uint32_t count);
VANTREL_API VantrelStatus VantrelBulkDeleteAttributesSetMaximumRejectCount(
    VantrelBulkDeleteAttributes *attributes, uint32_t count);

/* Whether the Next and Previous operations start after the current record (any value but 0) or at it (0).
 * The other bulk operations switch this on. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesSetSkipCurrentRecord(
    VantrelBulkRetrieveAttributes *attributes, int32_t skip);
VANTREL_API VantrelStatus VantrelBulkDeleteAttributesSetSkipCurrentRecord(
    VantrelBulkDeleteAttributes *attributes, int32_t skip);

/* Extracts length bytes of each record at the offset, or a system field (8 bytes). Everything extracted comes
 * back in the order of adding, without gaps. The ranges are those of VantrelFilterSetField, and all that is
 * extracted of a record is at most 65535 bytes; VANTREL_STATUS_INVALID_OPTION otherwise, and for an unknown
 * system field.
 *
 * There are 8202 entries, of which a field takes one, an aggregate or function three and a rounding one four;
 * VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE, checked first, where they do not suffice. Nothing is
 * added on failure. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddField(VantrelBulkRetrieveAttributes *attributes,
                                                                uint32_t offset, uint32_t length);
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddSystemField(
    VantrelBulkRetrieveAttributes *attributes, VantrelSystemField systemField);

/* Extracts the least or greatest value of a field over the records that pass the filters. All of them
 * together, not limited by the maximum record count, give one record of the reply, and none where no record
 * passes. Failures are those of VantrelBulkRetrieveAttributesAddField; a data type without a code in the
 * engine gives VANTREL_STATUS_INVALID_OPTION. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddMinimumAggregate(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length);
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddMaximumAggregate(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length);

/* Extracts a field's absolute value, or the next whole number above or below it. Failures as above. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddAbsoluteValueField(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length);
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddCeilingField(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length);
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddFloorField(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length);

/* Extracts a field's value rounded, or cut, to a number of decimal places: -32768 to 32767,
 * VANTREL_STATUS_INVALID_OPTION otherwise. Other failures as above. */
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddRoundField(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length,
    int32_t precision);
VANTREL_API VantrelStatus VantrelBulkRetrieveAttributesAddTruncateField(
    VantrelBulkRetrieveAttributes *attributes, VantrelDataType dataType, uint32_t offset, uint32_t length,
    int32_t precision);

/* BULK RETRIEVE AND BULK DELETE
 *
 * One request returns, or deletes, all records that pass the filters, up to the limits of the attributes,
 * from a starting point on in the direction named. The request is built in the result, whose former contents
 * are lost, and the reply replaces it; records may have come with a status other than 0 too
 * (VANTREL_STATUS_END_OF_FILE, _REJECT_COUNT_REACHED, _SMALL_EXTENDED_GET_BUFFER_ERROR,
 * _OPTIMIZE_LIMIT_REACHED, _RECORD_IN_USE at a record that another session has locked), so the result's
 * record count is read whatever the engine's status.
 *
 * The file keeps the status, but for the arguments named with the functions that start a search. Before the
 * engine is called, a null result or null attributes give VANTREL_STATUS_INVALID_POINTER_PARAMETER; a lock
 * mode outside the enumeration or a filter that is not complete VANTREL_STATUS_INVALID_OPTION (the
 * comparison, the constant or other field is missing, a pattern is another field, or the constant differs in
 * length from the field); and a pattern of more than 65534 bytes or a request that the result cannot hold
 * VANTREL_STATUS_DATA_LENGTH_ERROR. The result's contents mean nothing then. */

/* Go on from the file's position along the index of its last operation; VANTREL_INDEX_NONE there goes on in
 * the physical order. Right after opening there is nothing to go on from: VANTREL_STATUS_POSITION_NOT_SET. */
VANTREL_API VantrelStatus VantrelFileBulkRetrieveNext(VantrelFile *file,
                                                      const VantrelBulkRetrieveAttributes *attributes,
                                                      VantrelBulkRetrieveResult *result,
                                                      VantrelLockMode lockMode);
VANTREL_API VantrelStatus VantrelFileBulkRetrievePrevious(VantrelFile *file,
                                                          const VantrelBulkRetrieveAttributes *attributes,
                                                          VantrelBulkRetrieveResult *result,
                                                          VantrelLockMode lockMode);

/* Start at the first record of the index and go forwards, or at the last and go backwards. index is an index
 * of the file, handed to the engine unchecked (VANTREL_STATUS_INVALID_INDEX_NUMBER for one that the file does
 * not have), or VANTREL_INDEX_NONE for the physical order; next and previous then follow it. The attributes
 * are left to skip the current record, whatever the outcome of the search. Null attributes give
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER, which is not kept in the file. */
VANTREL_API VantrelStatus VantrelFileBulkRetrieveFirst(VantrelFile *file, VantrelIndex index,
                                                       VantrelBulkRetrieveAttributes *attributes,
                                                       VantrelBulkRetrieveResult *result,
                                                       VantrelLockMode lockMode);
VANTREL_API VantrelStatus VantrelFileBulkRetrieveLast(VantrelFile *file, VantrelIndex index,
                                                      VantrelBulkRetrieveAttributes *attributes,
                                                      VantrelBulkRetrieveResult *result,
                                                      VantrelLockMode lockMode);

/* Start at the record that compares with the key as asked: VANTREL_COMPARISON_EQUAL, _GREATER, _LESS,
 * _GREATER_OR_EQUAL or _LESS_OR_EQUAL. Of the key at most 1024 bytes are used; it receives the key value that
 * the engine returns. A null key searches with what the file's key buffer holds: the length of the last key
 * if that was one of the same index, else 1024 bytes; nothing with VANTREL_INDEX_NONE. The attributes are
 * left to skip the current record, whatever the outcome of the search. Null attributes give
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER and another comparison VANTREL_STATUS_INVALID_OPTION, neither kept
 * in the file and nothing changed. The index is as above, except that the physical order has no keys:
 * VANTREL_STATUS_INVALID_GET_EXPRESSION. */
VANTREL_API VantrelStatus VantrelFileBulkRetrieveNextByComparison(
    VantrelFile *file, VantrelComparison comparison, VantrelIndex index, void *key, uint32_t keyLength,
    VantrelBulkRetrieveAttributes *attributes, VantrelBulkRetrieveResult *result, VantrelLockMode lockMode);
VANTREL_API VantrelStatus VantrelFileBulkRetrievePreviousByComparison(
    VantrelFile *file, VantrelComparison comparison, VantrelIndex index, void *key, uint32_t keyLength,
    VantrelBulkRetrieveAttributes *attributes, VantrelBulkRetrieveResult *result, VantrelLockMode lockMode);

/* The same for deleting, without locks. */
VANTREL_API VantrelStatus VantrelFileBulkDeleteNext(VantrelFile *file,
                                                    const VantrelBulkDeleteAttributes *attributes,
                                                    VantrelBulkDeleteResult *result);
VANTREL_API VantrelStatus VantrelFileBulkDeletePrevious(VantrelFile *file,
                                                        const VantrelBulkDeleteAttributes *attributes,
                                                        VantrelBulkDeleteResult *result);
VANTREL_API VantrelStatus VantrelFileBulkDeleteFirst(VantrelFile *file, VantrelIndex index,
                                                     VantrelBulkDeleteAttributes *attributes,
                                                     VantrelBulkDeleteResult *result);
VANTREL_API VantrelStatus VantrelFileBulkDeleteLast(VantrelFile *file, VantrelIndex index,
                                                    VantrelBulkDeleteAttributes *attributes,
                                                    VantrelBulkDeleteResult *result);
VANTREL_API VantrelStatus VantrelFileBulkDeleteNextByComparison(VantrelFile *file,
                                                                VantrelComparison comparison,
                                                                VantrelIndex index, void *key,
                                                                uint32_t keyLength,
                                                                VantrelBulkDeleteAttributes *attributes,
                                                                VantrelBulkDeleteResult *result);
VANTREL_API VantrelStatus VantrelFileBulkDeletePreviousByComparison(VantrelFile *file,
                                                                    VantrelComparison comparison,
                                                                    VantrelIndex index, void *key,
                                                                    uint32_t keyLength,
                                                                    VantrelBulkDeleteAttributes *attributes,
                                                                    VantrelBulkDeleteResult *result);

/* BULK RESULTS
 *
 * The records that a bulk retrieve brought or a bulk delete removed, numbered from 1. Reading a result does
 * not change it; its getters keep their status in it. */

/* A new result holds no records. */
VANTREL_API VantrelStatus VantrelBulkRetrieveResultAllocate(VantrelBulkRetrieveResult **result);
VANTREL_API VantrelStatus VantrelBulkDeleteResultAllocate(VantrelBulkDeleteResult **result);

/* VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelBulkRetrieveResultFree(VantrelBulkRetrieveResult *result);
VANTREL_API VantrelStatus VantrelBulkDeleteResultFree(VantrelBulkDeleteResult *result);

/* The status of the getter called last, which stays; VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelBulkRetrieveResultGetLastStatusCode(const VantrelBulkRetrieveResult *result);
VANTREL_API VantrelStatus VantrelBulkDeleteResultGetLastStatusCode(const VantrelBulkDeleteResult *result);

/* How many records there are; -1 for null. */
VANTREL_API int32_t VantrelBulkRetrieveResultGetRecordCount(VantrelBulkRetrieveResult *result);
VANTREL_API int32_t VantrelBulkDeleteResultGetRecordCount(VantrelBulkDeleteResult *result);

/* The number of bytes extracted from a record, and where the record lies in the file; -1 on failure:
 * VANTREL_STATUS_INVALID_OPTION for an index outside 1 to the record count, VANTREL_STATUS_DATA_LENGTH_ERROR
 * where the reply is damaged and the record would reach past its end. The record found last is remembered:
 * going through all of them forwards takes time in proportion to the reply. */
VANTREL_API int32_t VantrelBulkRetrieveResultGetRecordLength(VantrelBulkRetrieveResult *result,
                                                             int32_t index);
VANTREL_API VantrelCursorPosition
VantrelBulkRetrieveResultGetRecordCursorPosition(VantrelBulkRetrieveResult *result, int32_t index);

/* Copies the extracted bytes of a record to a buffer of recordSize bytes. Returns their number or -1, with
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null buffer, VANTREL_STATUS_INVALID_OPTION for a negative
 * size, an index out of range or a buffer smaller than the record, into which nothing is copied, and
 * VANTREL_STATUS_DATA_LENGTH_ERROR as above. */
VANTREL_API int32_t VantrelBulkRetrieveResultGetRecord(VantrelBulkRetrieveResult *result, int32_t index,
                                                       void *record, int32_t recordSize);

/* Where the deleted record lay in the file; failures as above. */
VANTREL_API VantrelCursorPosition
VantrelBulkDeleteResultGetRecordCursorPosition(VantrelBulkDeleteResult *result, int32_t index);

/* BULK CREATE
 *
 * Inserts the records collected in a payload with one request. The payload is only read and can be used
 * again. */

/* A new payload holds no records. */
VANTREL_API VantrelStatus VantrelBulkCreatePayloadAllocate(VantrelBulkCreatePayload **payload);

/* VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelBulkCreatePayloadFree(VantrelBulkCreatePayload *payload);

/* Adds a copy of a record of 0 to 65535 bytes. All records, with 4 bytes more for each, fill at most 258044
 * bytes.
 *
 * Returns VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null record, kept in the payload; without keeping it
 * VANTREL_STATUS_INVALID_OPTION for a longer record and VANTREL_STATUS_DATA_LENGTH_ERROR where the payload
 * has no room for it; VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE where the number of records would
 * pass 2^32 - 1. A failure changes nothing. */
VANTREL_API VantrelStatus VantrelBulkCreatePayloadAddRecord(VantrelBulkCreatePayload *payload,
                                                            const void *record, uint32_t length);

/* A new result has the count 0. */
VANTREL_API VantrelStatus VantrelBulkCreateResultAllocate(VantrelBulkCreateResult **result);

/* Null is harmless. Returns 0. */
VANTREL_API VantrelStatus VantrelBulkCreateResultFree(VantrelBulkCreateResult *result);

/* The status of the getter called last, which stays; VANTREL_STATUS_INVALID_POINTER_PARAMETER for null. */
VANTREL_API VantrelStatus VantrelBulkCreateResultGetLastStatusCode(const VantrelBulkCreateResult *result);

/* How many records were inserted; -1 for null. */
VANTREL_API int32_t VantrelBulkCreateResultGetRecordCount(VantrelBulkCreateResult *result);

/* Where the index-th record of the payload, counted from 1, was inserted. Returns -1 with
 * VANTREL_STATUS_INVALID_OPTION for an index outside 1 to the record count, and with
 * VANTREL_STATUS_DATA_LENGTH_ERROR where the count is damaged and the position would lie outside the
 * result. */
VANTREL_API VantrelCursorPosition
VantrelBulkCreateResultGetRecordCursorPosition(VantrelBulkCreateResult *result, int32_t index);

/* Inserts the payload's records; the last one inserted becomes the current record. The first record that the
 * engine refuses (VANTREL_STATUS_DUPLICATE_KEY_VALUE and other statuses of an insert) ends the request: those
 * before it stay inserted, and the result tells their number and positions. Records of fewer than 4 bytes on
 * average give VANTREL_STATUS_INVALID_EXTENDED_INSERT_BUFFER, since the reply has no room, and nothing is
 * inserted. The call needs 252 KiB of stack.
 *
 * The file keeps the status, VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null payload or result among
 * them; the result's last status stays. Where the status is not 0, the count may
 * be that of the payload instead of the number of records inserted: the engine may not have answered. */
VANTREL_API VantrelStatus VantrelFileBulkCreate(VantrelFile *file, const VantrelBulkCreatePayload *payload,
                                                VantrelBulkCreateResult *result);

/* FILE INFORMATION
 *
 * A file information record keeps what the engine reports of an open file: its definition, counts, use,
 * locks, referential integrity, security and segments. VantrelFileGetInformation fills it, getters read it
 * without asking the engine again, and VantrelClientFileCreateUsingFileInformation creates a like file from
 * it. */

/* Allocates a record whose replies are all zero bytes: until it is filled, its getters read those, so that a
 * page size, for example, has no meaning yet. Returns VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null out
 * pointer; VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE, the out pointer then null. */
VANTREL_API VantrelStatus VantrelFileInformationAllocate(VantrelFileInformation **information);

/* Frees the record; null is harmless. Returns 0. */
VANTREL_API VantrelStatus VantrelFileInformationFree(VantrelFileInformation *information);

/* The status of the last getter called on the record, which stays; VANTREL_STATUS_INVALID_POINTER_PARAMETER
 * for null. */
VANTREL_API VantrelStatus VantrelFileInformationGetLastStatusCode(const VantrelFileInformation *information);

/* Asks the engine for everything it knows of the file, in nine requests, and keeps the replies in the record,
 * in the place of earlier ones. The first request that fails ends the series: the record then keeps what it
 * held before in the places not reached.
 *
 * Returns VANTREL_STATUS_FILE_NOT_OPEN for a null file; VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null
 * record or a file that is not open; otherwise the status of the last request made. Kept in the file, never
 * in the record. */
VANTREL_API VantrelStatus VantrelFileGetInformation(VantrelFile *file, VantrelFileInformation *information);

/* Copies the description of a key segment into a key segment record, whose last status stays. Segments are
 * counted from 1 over all indexes, in the order of the indexes; the record then knows its index and the
 * number of unique values too.
 *
 * Returns VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null handle or key segment;
 * VANTREL_STATUS_INVALID_OPTION where there is no such segment. Kept in the file information. */
VANTREL_API VantrelStatus VantrelFileInformationGetKeySegment(VantrelFileInformation *information,
                                                              VantrelKeySegment *segment,
                                                              int32_t segmentNumber);

/* All further getters read one property. They return -1 for null, those of enumerations and indexes -7, where
 * nothing else is stated; otherwise they clear the last status. An enumeration whose stored value has no
 * meaning gives -7 and VANTREL_STATUS_INVALID_OPTION as last status. Flags are 0 or 1. 32-bit numbers are
 * unsigned where nothing else is stated: from 2147483648 up they show as negative and are to be cast to
 * uint32_t. */

/* The definition of the file: record length in bytes (0 to 65535) and the options it was created with. The
 * page size is never VANTREL_PAGE_SIZE_DEFAULT. */
VANTREL_API int32_t VantrelFileInformationGetFixedRecordLength(VantrelFileInformation *information);
VANTREL_API VantrelPageSize VantrelFileInformationGetPageSize(VantrelFileInformation *information);
VANTREL_API VantrelFileVersion VantrelFileInformationGetFileVersion(VantrelFileInformation *information);
VANTREL_API VantrelVariableLengthRecordsMode
VantrelFileInformationGetVariableLengthRecordsMode(VantrelFileInformation *information);
VANTREL_API VantrelRecordCompressionMode
VantrelFileInformationGetRecordCompressionMode(VantrelFileInformation *information);
VANTREL_API VantrelFreeSpaceThreshold
VantrelFileInformationGetFreeSpaceThreshold(VantrelFileInformation *information);
VANTREL_API VantrelSystemDataMode
VantrelFileInformationGetSystemDataMode(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetPageCompression(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetPagePreallocation(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetBalancedIndexes(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetKeyOnly(VantrelFileInformation *information);

/* The number of indexes, system indexes left out (signed, 16 bits), and of records (signed, 64 bits). */
VANTREL_API int32_t VantrelFileInformationGetIndexCount(VantrelFileInformation *information);
VANTREL_API int64_t VantrelFileInformationGetRecordCount(VantrelFileInformation *information);

/* Reserved space not used yet: duplicate pointers (0 to 255) and pages (0 to 65535). */
VANTREL_API int32_t VantrelFileInformationGetUnusedDuplicatePointerCount(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetUnusedPageCount(VantrelFileInformation *information);

/* Whether the file is divided into several files of the operating system. */
VANTREL_API int32_t VantrelFileInformationGetSegmented(VantrelFileInformation *information);

/* The engine's codes for the system data and the system index (0 to 255 each), and the size and version of
 * the system index (0 to 65535 each). */
VANTREL_API int32_t VantrelFileInformationGetSystemData(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSystemIndex(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSystemIndexSize(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSystemIndexVersion(VantrelFileInformation *information);

/* Whether changes to the file can be logged, and the index that the log identifies records by (0 to 255). */
VANTREL_API int32_t VantrelFileInformationGetLoggable(VantrelFileInformation *information);
VANTREL_API VantrelIndex VantrelFileInformationGetLogIndex(VantrelFileInformation *information);

/* The record that stood in the way of the last insert or update that gave VANTREL_STATUS_DUPLICATE_KEY_VALUE,
 * and the index (0 to 65535) in which it did. */
VANTREL_API VantrelCursorPosition
VantrelFileInformationGetDuplicateRecordConflictCursorPosition(VantrelFileInformation *information);
VANTREL_API VantrelIndex
VantrelFileInformationGetDuplicateRecordConflictIndex(VantrelFileInformation *information);

/* The use of the file by all sessions: the engine's identifier of the file, the number of open handles, the
 * time of opening and the number of uses, as the engine counts them. */
VANTREL_API int32_t VantrelFileInformationGetIdentifier(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetHandleCount(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetOpenTimestamp(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetUsageCount(VantrelFileInformation *information);

/* Flags of the use: explicit locks are held, client transactions are active, the file is open for reading
 * only, it is in continuous operation, referential integrity constraints apply, the owner name given was
 * wrong. */
VANTREL_API int32_t VantrelFileInformationGetExplicitLocks(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetClientTransactions(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetReadOnly(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetContinuousOperation(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetReferentialIntegrityConstraints(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetWrongOwner(VantrelFileInformation *information);

/* FILE INFORMATION: OWNERS, LOCKS, INTEGRITY,
 * SEGMENTS AND SECURITY
 *
 * These getters read a file information record under the same rules. Those of texts write into a buffer of
 * the caller, whose size is given in bytes, and return a status that the record keeps:
 * VANTREL_STATUS_INVALID_POINTER_PARAMETER for a null handle (not kept) or a null buffer,
 * VANTREL_STATUS_INVALID_OPTION for a buffer that is too small, negative sizes included; a refused buffer is
 * not written to. */

/* What the owner name protects, and how the file is encrypted. */
VANTREL_API VantrelOwnerMode VantrelFileInformationGetOwnerMode(VantrelFileInformation *information);
VANTREL_API VantrelEncryptionType
VantrelFileInformationGetEncryptionType(VantrelFileInformation *information);

/* The version of the gateway through which the file is reached, and its platform (0 to 65535 each). */
VANTREL_API int32_t VantrelFileInformationGetGatewayMajorVersion(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetGatewayMinorVersion(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetGatewayPatchLevel(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetGatewayPlatform(VantrelFileInformation *information);

/* The name of the gateway: fills 64 bytes, of which at most 63 are text, and needs a buffer of 64. */
VANTREL_API VantrelStatus VantrelFileInformationGetGatewayName(VantrelFileInformation *information,
                                                               char *buffer, int32_t size);

/* The lock owner is the session whose lock on a record, a page or the file kept this session out last. */

/* The owner's identifiers, 0 to 65535; for null VANTREL_STATUS_INVALID_POINTER_PARAMETER, which is a possible
 * identifier too. */
VANTREL_API int32_t
VantrelFileInformationGetLockOwnerServiceAgentIdentifier(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerClientIdentifier(VantrelFileInformation *information);

/* The owner's name: fills 64 bytes, of which at most 63 are text, and needs a buffer of 64. */
VANTREL_API VantrelStatus VantrelFileInformationGetLockOwnerName(VantrelFileInformation *information,
                                                                 char *buffer, int32_t size);

/* Flags of the lock: it is implicit, as a transaction takes it; it covers the whole file; it covers a record;
 * the owner is a session of the calling process; the owner writes without waiting; it holds what it wrote. */
VANTREL_API int32_t VantrelFileInformationGetLockOwnerImplicitLock(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerFileLock(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerRecordLock(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerSameProcess(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerWriteNoWait(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerWriteHold(VantrelFileInformation *information);

/* The mode of an explicit lock; VANTREL_LOCK_MODE_NONE where none is held. */
VANTREL_API VantrelLockMode
VantrelFileInformationGetLockOwnerExplicitLockMode(VantrelFileInformation *information);

/* The type of the page locked, the first of data, index and variable page that applies;
 * VANTREL_PAGE_LOCK_TYPE_NONE where no page is. */
VANTREL_API VantrelPageLockType
VantrelFileInformationGetLockOwnerPageLockType(VantrelFileInformation *information);

/* The owner's time in its transaction in the engine's unit, the index it works on (signed, 32 bits), and the
 * nesting level of its transaction. */
VANTREL_API int32_t VantrelFileInformationGetLockOwnerTimeInTransaction(VantrelFileInformation *information);
VANTREL_API VantrelIndex VantrelFileInformationGetLockOwnerIndex(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetLockOwnerTransactionLevel(VantrelFileInformation *information);

/* The last violation of referential integrity: the operation code of the request and the record concerned. */
VANTREL_API int32_t
VantrelFileInformationGetReferentialIntegrityOperationCode(VantrelFileInformation *information);
VANTREL_API VantrelCursorPosition
VantrelFileInformationGetReferentialIntegrityCursorPosition(VantrelFileInformation *information);

/* The file concerned: fills 255 bytes, of which at most 254 are text, and needs a buffer of 255. */
VANTREL_API VantrelStatus VantrelFileInformationGetReferentialIntegrityFileName(
    VantrelFileInformation *information, char *buffer, int32_t size);

/* The number of segments: 1 for a file in one piece; 0 where the engine reports none. */
VANTREL_API int32_t VantrelFileInformationGetSegmentCount(VantrelFileInformation *information);

/* The name of the operating system's file that holds a segment, counted from 1, with its terminator. The
 * buffer needs the length of both; what lies behind them stays. VANTREL_STATUS_INVALID_OPTION also where
 * there is no such segment. */
VANTREL_API VantrelStatus VantrelFileInformationGetSegmentFileName(VantrelFileInformation *information,
                                                                   int32_t segmentNumber, char *buffer,
                                                                   int32_t size);

/* Flags of the security under which the file handle was opened: how the session came to it (trusted,
 * implicit, explicit), who checks identity and rights, and the means used. */
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleTrusted(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleImplicit(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleExplicit(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityHandleAuthenticationByDatabase(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityHandleAuthorizationByDatabase(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityHandleWindowsNamedPipe(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleWorkgroup(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleVnpasswd(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandlePAM(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleRTSSComplete(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityHandleRTSSPreauthorized(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityHandleRTSSDisabled(VantrelFileInformation *information);

/* The same flags for the session's current database. */
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseTrusted(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseImplicit(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseExplicit(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseAuthenticationByDatabase(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseAuthorizationByDatabase(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseWindowsNamedPipe(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseWorkgroup(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseVnpasswd(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityCurrentDatabasePAM(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseRTSSComplete(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseRTSSPreauthorized(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityCurrentDatabaseRTSSDisabled(VantrelFileInformation *information);

/* What the session may do with the file. NoRights is 1 where the engine reports no right at all, not even one
 * that has no getter here; Read is the same as Open. */
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionNoRights(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionOpen(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionRead(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityPermissionCreateRecord(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionUpdate(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityPermissionCreateFile(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionDelete(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionExecute(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionAlter(VantrelFileInformation *information);
VANTREL_API int32_t VantrelFileInformationGetSecurityPermissionRefer(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityPermissionCreateView(VantrelFileInformation *information);
VANTREL_API int32_t
VantrelFileInformationGetSecurityPermissionCreateStoredProcedure(VantrelFileInformation *information);

/* Database, table and user of the file handle, and the session's current database and user. The buffer needs
 * the length that the engine states; the embedded engine counts the terminator. Only the last byte of the
 * buffer is set to zero: bytes between the name and it stay, so that a buffer larger than the name is cleared
 * beforehand, and a buffer just as large as the name loses the name's last byte.
 * VANTREL_STATUS_INVALID_OPTION also where the name does not lie within the engine's reply. */
VANTREL_API VantrelStatus VantrelFileInformationGetSecurityHandleDatabaseName(
    VantrelFileInformation *information, char *buffer, int32_t size);
VANTREL_API VantrelStatus VantrelFileInformationGetSecurityHandleTableName(
    VantrelFileInformation *information, char *buffer, int32_t size);
VANTREL_API VantrelStatus VantrelFileInformationGetSecurityHandleUserName(VantrelFileInformation *information,
                                                                          char *buffer, int32_t size);
VANTREL_API VantrelStatus VantrelFileInformationGetSecurityCurrentDatabaseName(
    VantrelFileInformation *information, char *buffer, int32_t size);
VANTREL_API VantrelStatus VantrelFileInformationGetSecurityCurrentUserName(
    VantrelFileInformation *information, char *buffer, int32_t size);

/* TEXTS AND TIMESTAMPS
 *
 * English texts for display. Each function takes any number and never gives null; numbers without a meaning
 * give "Unknown". */

/* The text of a status of the library or of the engine. */
VANTREL_API const char *VantrelStatusCodeToString(VantrelStatus status);

/* "None" for the physical order; indexes 0 to 118 count from 1 in the texts "1" to "119". */
VANTREL_API const char *VantrelIndexToString(VantrelIndex index);

/* The names of the enumerations' values. Page sizes are in bytes. */
VANTREL_API const char *VantrelVersionTypeToString(VantrelVersionType versionType);
VANTREL_API const char *VantrelFileVersionToString(VantrelFileVersion fileVersion);
VANTREL_API const char *VantrelPageSizeToString(VantrelPageSize pageSize);
VANTREL_API const char *VantrelFreeSpaceThresholdToString(VantrelFreeSpaceThreshold freeSpaceThreshold);
VANTREL_API const char *VantrelSystemDataModeToString(VantrelSystemDataMode systemDataMode);
VANTREL_API const char *VantrelACSModeToString(VantrelACSMode acsMode);
VANTREL_API const char *VantrelNullKeyModeToString(VantrelNullKeyMode nullKeyMode);
VANTREL_API const char *VantrelDuplicateModeToString(VantrelDuplicateMode duplicateMode);
VANTREL_API const char *VantrelPageLockTypeToString(VantrelPageLockType pageLockType);
VANTREL_API const char *VantrelLockModeToString(VantrelLockMode lockMode);
VANTREL_API const char *VantrelOwnerModeToString(VantrelOwnerMode ownerMode);
VANTREL_API const char *VantrelEncryptionTypeToString(VantrelEncryptionType encryptionType);
VANTREL_API const char *VantrelRecordCompressionModeToString(
    VantrelRecordCompressionMode recordCompressionMode);
VANTREL_API const char *VantrelVariableLengthRecordsModeToString(
    VantrelVariableLengthRecordsMode variableLengthRecordsMode);
VANTREL_API const char *VantrelSystemFieldToString(VantrelSystemField systemField);
VANTREL_API const char *VantrelDataTypeToString(VantrelDataType dataType);

/* From microseconds since 1970-01-01 00:00:00 to timestamps and back. Overflow wraps around; what a timestamp
 * has below a microsecond is dropped toward 1970. */
VANTREL_API VantrelTimestamp VantrelUnixEpochMicrosecondsToTimestamp(int64_t microseconds);
VANTREL_API int64_t VantrelTimestampToUnixEpochMicroseconds(VantrelTimestamp timestamp);

#ifdef __cplusplus
}
#endif

#endif
