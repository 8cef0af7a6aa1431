/*
 * Debian's libheif and libtiff link an HEVC encoder (libx265) and JBIG (libjbig) under the GPL, which reading pictures
 * does without. The wheel holds these in their place: nothing is ever encoded, and a TIFF of JBIG pixels is damaged.
 */
#ifdef STAND_IN_FOR_X265
const void* x265_api_get_199(int bit_depth) {
  (void)bit_depth;
  return 0;
}
#else
/* libjbig's "invalid data", a status other than 0. */
enum { refused = 0x60 };

void jbg_dec_init(void* state) { (void)state; }
int jbg_dec_in(void* state, unsigned char* data, unsigned long length, unsigned long* read) {
  (void)state, (void)data, (void)length, (void)read;
  return refused;
}
const char* jbg_strerror(int status) {
  (void)status;
  return "JBIG cannot be read";
}
int jbg_newlen(unsigned char* data, unsigned long length) {
  (void)data, (void)length;
  return refused;
}
unsigned long jbg_dec_getsize(const void* state) {
  (void)state;
  return 0;
}
unsigned char* jbg_dec_getimage(const void* state, int plane) {
  (void)state, (void)plane;
  return 0;
}
void jbg_dec_free(void* state) { (void)state; }
void jbg_enc_init(void* state) { (void)state; }
void jbg_enc_out(void* state) { (void)state; }
void jbg_enc_free(void* state) { (void)state; }
#endif
