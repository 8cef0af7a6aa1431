#ifndef PRAVIK_C_H
#define PRAVIK_C_H

/*
 * Pravik for C and for every language that can call C.
 *
 * A handle (pravik_handle *) holds the engines. Handles share nothing, but for those that pravik_share() makes: two
 * users in one process do not notice each other. A call does its work before it returns, and keeps nothing of its
 * picture. All functions may be called from any thread, also several at once on one handle; destroy a handle when no
 * call on it is under way. Texts are UTF-8 and end with a zero byte. No function throws; a null handle, picture or text
 * gives PRAVIK_INVALID_ARGUMENT.
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What became of a call. The numbers do not change. */
typedef enum pravik_status {
  PRAVIK_OK = 0,
  /* The text engine failed, its models are missing, or there was no memory for it. */
  PRAVIK_RECOGNITION_FAILED = 1,
  /* A field could not be parsed. */
  PRAVIK_PARSE_FAILURE = 2,
  /* The picture shows another kind of document than the one asked for. */
  PRAVIK_SCENE_MISMATCH = 3,
  /* No picture, a damaged one, or one that is too large. */
  PRAVIK_INVALID_IMAGE = 4,
  /* The picture does not show enough text for a record, or no code. */
  PRAVIK_INSUFFICIENT_TEXT = 5,
  /* The observations are not in the form that pravik_parse() reads. */
  PRAVIK_INVALID_INPUT = 6,
  /* A null pointer, an unknown kind, level or language, a size or a day that cannot be. */
  PRAVIK_INVALID_ARGUMENT = 7,
  /* No memory, or a fault of the library. */
  PRAVIK_INTERNAL_ERROR = 8,
  /* pravik_cancel() called it off. */
  PRAVIK_CANCELLED = 9
} pravik_status;

/* What is read from a picture. Calls take kinds, levels and formats as int, so that they can refuse any number. */
typedef enum pravik_kind {
  PRAVIK_ID_FRONT = 0, /* the portrait side of an identity card */
  PRAVIK_ID_BACK = 1,  /* its emblem side */
  PRAVIK_BANK_CARD = 2,
  PRAVIK_CODE = 3, /* a QR or bar code */
  PRAVIK_TEXT = 4, /* all text, line by line */
  PRAVIK_CARDS = 5 /* every card on the picture, of whatever kind and however it lies */
} pravik_kind;

/*
 * From silent to the most detailed. Lines may hold card data from PRAVIK_LOG_WARNING on: a warning quotes the whole
 * text of a portrait side without a number, PRAVIK_LOG_INFO tells identity numbers and the payloads of codes, and
 * PRAVIK_LOG_DEBUG the fields of all cards. PRAVIK_LOG_ERROR holds none.
 */
typedef enum pravik_log_level {
  PRAVIK_LOG_NONE = 0,
  PRAVIK_LOG_ERROR = 1,
  PRAVIK_LOG_WARNING = 2,
  PRAVIK_LOG_INFO = 3,
  PRAVIK_LOG_DEBUG = 4,
  PRAVIK_LOG_VERBOSE = 5
} pravik_log_level;

/* How the bytes of a pixel lie in memory. */
typedef enum pravik_pixel_format {
  PRAVIK_BGRA8 = 0, /* blue, green, red, alpha */
  PRAVIK_GREY8 = 1,
  PRAVIK_BGR8 = 2,
  PRAVIK_RGB8 = 3,
  PRAVIK_RGBA8 = 4
} pravik_pixel_format;

typedef struct pravik_handle pravik_handle;
/* What a call gave: a status with its texts. Belongs to the caller, who frees it with pravik_result_free(). */
typedef struct pravik_result pravik_result;

/*
 * Hears one message of the log, a line without its end that may quote a text of several lines. Called on the thread of
 * the call that it belongs to, one at a time for a handle; the line is valid during the call. It must return, and must
 * not use its own handle.
 */
typedef void (*pravik_log_function)(void* context, pravik_log_level level, const char* line);

/* The library's version, such as "1.1.1". */
const char* pravik_version(void);

/*
 * Makes a handle. `model_directory` is the folder of the text models, null or "" for the installed one; `threads` is
 * how many threads one recognition may use, 0 (or more than there are cores) for one a core. Models are loaded with the
 * first recognition that needs them. Null when there is no memory, or `threads` is negative.
 */
pravik_handle* pravik_create(const char* model_directory, int threads);
/*
 * Another handle on the engines of this one, for a call with settings of its own: it begins with those of this one, and
 * without a log. It costs no models and next to no time, and may live longer. Null for null, or when there is no
 * memory.
 */
pravik_handle* pravik_share(pravik_handle* handle);
/*
 * Calls off what is under way on this handle, and all later calls: they end with PRAVIK_CANCELLED before their next
 * stage. Other handles on the same engines go on.
 */
pravik_status pravik_cancel(pravik_handle* handle);
/* Ends a handle; null is allowed. */
void pravik_destroy(pravik_handle* handle);

/*
 * Sends the log of this handle's own calls, up to `level`, to a function, which is handed the context; a null function,
 * or PRAVIK_LOG_NONE, ends that. The function before is not called any more once this returns. Nothing is logged
 * anywhere unless this is called.
 */
pravik_status pravik_set_log(pravik_handle* handle, int level, pravik_log_function function, void* context);

/*
 * How long one recognition may take, 10 seconds unless this is called; then what was read so far decides. From 0.001 to
 * 604800 (a week), else PRAVIK_INVALID_ARGUMENT.
 */
pravik_status pravik_set_time_limit(pravik_handle* handle, double seconds);
/*
 * Whether the JSON of a card tells how it was read, 1 or 0, which is so unless this is called: "fields" with the text,
 * the confidence and the corners of each, "outline" and "dotsPerMillimetre". PRAVIK_CARDS always does.
 */
pravik_status pravik_set_report(pravik_handle* handle, int is_told);
/* The day by which a card has expired or is not yet valid, such as "2026-01-31"; "" for today (UTC), as at first. */
pravik_status pravik_set_date(pravik_handle* handle, const char* day);
/*
 * The language of pravik_result_error_message(): "zh", "en", or "" for that of the environment (LC_ALL, LC_MESSAGES,
 * LANG). The message then tells all that is known, for people to read. Unless this is called it is the one of the JSON,
 * which stays as it is.
 */
pravik_status pravik_set_language(pravik_handle* handle, const char* language);

/*
 * Reads the picture in a file: JPEG, PNG, BMP, WebP, HEIC, or the first page of TIFF or PDF; the orientation that it
 * stores is honoured. A PDF is drawn by pdftoppm of poppler-utils, which runs as a process of its own.
 */
pravik_result* pravik_recognize_file(pravik_handle* handle, int kind, const char* path);
/* Reads the picture in the bytes of such a file. */
pravik_result* pravik_recognize_memory(pravik_handle* handle, int kind, const void* bytes, size_t size);
/*
 * Reads pixels as a camera gives them, upright, row by row from the top left. `stride` is the distance of two rows in
 * bytes. PRAVIK_INVALID_ARGUMENT when a side is below 1 or the stride does not hold a row. The pixels are read during
 * the call and not changed, and copied unless they are BGRA or grey; alpha is passed over.
 */
pravik_result* pravik_recognize_pixels(pravik_handle* handle, int kind, const uint8_t* pixels, int width, int height,
                                       size_t stride, int format);
/*
 * Makes a record of text that something else has read: a JSON text {"observations":[{"text":…,"confidence":0…1,
 * "boundingBox":{"x":…,"y":…,"width":…,"height":…}}]}, boxes within 0…1 with the origin at the lower left. The kind is
 * that of a card, else PRAVIK_INVALID_ARGUMENT. Nothing is logged.
 */
pravik_result* pravik_parse(int kind, const char* observations);

/*
 * The words for what stands in the JSON of other calls, by code, for programs that show it to people, as the JSON of a
 * result: {"kinds":{NAME:{"label":…,"fields":{NAME:{"label":…,"display":"shown"|"masked"|"hidden"},…}},…},
 * "errors":{CODE:…},"reasons":{CODE:…},"warnings":{CODE:…},"checks":{NAME:…}}. A masked field is a number that others
 * should not see; a hidden one says what another does. `language` is that of pravik_set_language().
 */
pravik_result* pravik_wordings(const char* language);

/*
 * PRAVIK_OK, or why there is no record; of several cards, PRAVIK_OK when one was read, for each of the others has its
 * error in the JSON. A null result, which only a lack of memory gives, is PRAVIK_INTERNAL_ERROR.
 */
pravik_status pravik_result_status(const pravik_result* result);
/*
 * The answer as JSON on one line, {"kind":…,"result":{…},"checks":{…}} or {"kind":…,"error":{"code":…,"message":…,
 * "context":{…}}}, as the command line writes it; the context says more than the message, such as why a file cannot be
 * read, and "report" beside the error why nothing was read. "turned" tells by how many degrees clockwise a picture was
 * turned to stand upright, if it was; "warnings" and "doubtful" name what makes a record less certain than it looks and
 * the fields that cannot be as they are. PRAVIK_CARDS gives {"kind":"cards","cards":[{"kind":…,"corners":…,"result":…},
 * …]}. The statuses from PRAVIK_INVALID_INPUT on have neither kind nor context. Never
 * null; valid until the result is freed, as are the next two.
 */
const char* pravik_result_json(const pravik_result* result);
/* The error's stable code, such as "scene_mismatch"; "" without an error. */
const char* pravik_result_error_code(const pravik_result* result);
/* The error's text for people; "" without an error. */
const char* pravik_result_error_message(const pravik_result* result);
/* Null is allowed. */
void pravik_result_free(pravik_result* result);

#ifdef __cplusplus
}
#endif

#endif
