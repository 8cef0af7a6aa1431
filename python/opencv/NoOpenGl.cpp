// OpenCV's core asks GLX for the functions of OpenGL when a picture lies in a graphics card, which none here does. It
// refuses such a picture where there are no functions.
extern "C" __attribute__((visibility("hidden"))) void* glXGetProcAddressARB(const unsigned char* name);

void* glXGetProcAddressARB(const unsigned char* /*name*/) {
  return nullptr;
}
