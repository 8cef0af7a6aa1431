// The C interface as Python sees it: calls on a shared handle, which give their answers as JSON. Types and exceptions
// are made of that in Python.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/unique_ptr.h>
#include <pravik_c.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace nb = nanobind;

namespace {

using Handle = std::unique_ptr<pravik_handle, decltype(&pravik_destroy)>;
using CallResult = std::unique_ptr<pravik_result, decltype(&pravik_result_free)>;

/// Bytes of any Python object that has them in one piece; they stay where they are as long as this lives.
class Buffer {
 public:
  explicit Buffer(nb::handle object) {
    if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) != 0) throw nb::python_error();
  }
  ~Buffer() { PyBuffer_Release(&view_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  const std::uint8_t* data() const { return static_cast<const std::uint8_t*>(view_.buf); }
  std::size_t size() const { return static_cast<std::size_t>(view_.len); }

 private:
  Py_buffer view_{};
};

nb::object textOf(const char* text) {
  return nb::steal(
      PyUnicode_DecodeUTF8(text, static_cast<Py_ssize_t>(std::char_traits<char>::length(text)), "replace"));
}

/// What a call gives: its status, the JSON, and the error's text.
nb::tuple answerOf(const CallResult& result) {
  return nb::make_tuple(static_cast<int>(pravik_result_status(result.get())), textOf(pravik_result_json(result.get())),
                        textOf(pravik_result_error_message(result.get())));
}

/// Works without the interpreter's lock.
template <class Work>
nb::tuple answered(const Work& work) {
  CallResult result(nullptr, pravik_result_free);
  {
    const nb::gil_scoped_release unlocked;
    result.reset(work());
  }
  return answerOf(result);
}

void require(pravik_status status, const char* what) {
  if (status != PRAVIK_OK) throw std::invalid_argument(what);
}

/// One call with its own settings, on the engines of a reader. To be used once, and cancelled from any thread.
class Call {
 public:
  explicit Call(pravik_handle* shared) : handle_(pravik_share(shared), pravik_destroy) {
    if (!handle_) throw std::bad_alloc();
  }

  void setTimeLimit(double seconds) {
    require(pravik_set_time_limit(handle_.get(), seconds), "time_limit: not a time");
  }
  void setLog(int level, nb::object listener) {
    listener_ = std::move(listener);
    require(pravik_set_log(handle_.get(), level, tell, this), "log_level: there is no such level");
  }
  void cancel() { pravik_cancel(handle_.get()); }

  nb::tuple file(int kind, const nb::bytes& path) {
    return answered([&] { return pravik_recognize_file(handle_.get(), kind, path.c_str()); });
  }
  nb::tuple memory(int kind, nb::handle picture) {
    const Buffer bytes(picture);
    // A buffer without bytes may have no address.
    const void* start = bytes.size() == 0 ? static_cast<const void*>("") : bytes.data();
    return answered([&] { return pravik_recognize_memory(handle_.get(), kind, start, bytes.size()); });
  }
  nb::tuple pixels(int kind, nb::handle picture, int width, int height, int format) {
    const Buffer bytes(picture);
    const auto rows = static_cast<std::size_t>(height);
    if (width < 1 || height < 1 || bytes.size() % rows != 0)
      throw std::invalid_argument("the pixels are not of that size");
    return answered([&] {
      return pravik_recognize_pixels(handle_.get(), kind, bytes.data(), width, height, bytes.size() / rows, format);
    });
  }
  /// The answer to a picture of more pixels than are read, of which none is looked at.
  nb::tuple tooLarge(int kind, int width, int height) {
    const std::uint8_t none = 0;
    const auto stride = static_cast<std::size_t>(width);
    return answered(
        [&] { return pravik_recognize_pixels(handle_.get(), kind, &none, width, height, stride, PRAVIK_GREY8); });
  }

 private:
  static void tell(void* context, pravik_log_level level, const char* line) {
    const nb::gil_scoped_acquire locked;
    try {
      static_cast<Call*>(context)->listener_(static_cast<int>(level), textOf(line));
    } catch (nb::python_error& error) {
      error.discard_as_unraisable("pravik's log");
    }
  }

  nb::object listener_;
  Handle handle_;
};

/// The engines.
class Engine {
 public:
  Engine(const nb::bytes& models, int threads) : handle_(pravik_create(models.c_str(), threads), pravik_destroy) {
    if (!handle_) throw std::bad_alloc();
    pravik_set_report(handle_.get(), 1);
  }

  void setDate(const std::string& day) { require(pravik_set_date(handle_.get(), day.c_str()), "date: not a day"); }
  void setLanguage(const std::string& language) {
    require(pravik_set_language(handle_.get(), language.c_str()), "language: zh or en");
  }
  std::unique_ptr<Call> call() { return std::make_unique<Call>(handle_.get()); }
  /// Lets go of the engines without ending them: in a forked process their threads are gone, and would be waited for.
  void abandon() { handle_.release(); }

 private:
  Handle handle_;
};

}  // namespace

NB_MODULE(_pravik, module) {
  nb::class_<Call>(module, "Call")
      .def("set_time_limit", &Call::setTimeLimit)
      .def("set_log", &Call::setLog)
      .def("cancel", &Call::cancel)
      .def("file", &Call::file)
      .def("memory", &Call::memory)
      .def("pixels", &Call::pixels)
      .def("too_large", &Call::tooLarge);
  nb::class_<Engine>(module, "Engine")
      .def(nb::init<const nb::bytes&, int>())
      .def("set_date", &Engine::setDate)
      .def("set_language", &Engine::setLanguage)
      .def("call", &Engine::call)
      .def("abandon", &Engine::abandon);
  module.def("parse", [](int kind, const std::string& observations) {
    return answered([&] { return pravik_parse(kind, observations.c_str()); });
  });
  module.def("wordings", [](const std::string& language) {
    return answerOf(CallResult(pravik_wordings(language.c_str()), pravik_result_free));
  });
  module.attr("version") = pravik_version();
}
