/* Prints the record of each picture as a line of JSON: read-a-card KIND PICTURE..., errors on standard error. */
#include <pravik_c.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char* const kinds[] = {"id-front", "id-back", "bank-card", "code", "text", "cards"};
enum { kind_count = sizeof kinds / sizeof kinds[0] };

static int kind_named(const char* name) {
  int kind = 0;
  while (kind < kind_count && strcmp(kinds[kind], name) != 0) ++kind;
  return kind;
}

static void print_log(void* context, pravik_log_level level, const char* line) {
  (void)level;
  fprintf(context, "%s\n", line);
}

/* Whether the picture gave a record. */
static int print_record(pravik_handle* handle, pravik_kind kind, const char* picture) {
  pravik_result* result = pravik_recognize_file(handle, kind, picture);
  const pravik_status status = pravik_result_status(result);
  if (status == PRAVIK_OK)
    puts(pravik_result_json(result));
  else
    fprintf(stderr, "%s: %s (status %d): %s\n", picture, pravik_result_error_code(result), (int)status,
            pravik_result_error_message(result));
  pravik_result_free(result);
  return status == PRAVIK_OK;
}

int main(int argc, char** argv) {
  const int kind = argc > 2 ? kind_named(argv[1]) : kind_count;
  if (kind == kind_count) {
    fprintf(stderr, "usage: read-a-card id-front|id-back|bank-card|code|text|cards PICTURE...\n");
    return 2;
  }
  pravik_handle* handle = pravik_create(NULL, 0);
  if (handle == NULL) return EXIT_FAILURE;
  pravik_set_log(handle, PRAVIK_LOG_ERROR, print_log, stderr);
  /* Errors in the user's language. */
  pravik_set_language(handle, "");
  int all_read = 1;
  for (int i = 2; i < argc; ++i) all_read &= print_record(handle, (pravik_kind)kind, argv[i]);
  pravik_destroy(handle);
  return all_read ? EXIT_SUCCESS : EXIT_FAILURE;
}
