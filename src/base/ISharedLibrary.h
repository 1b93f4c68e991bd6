// A library that the library manager starts and stops once per process.
#pragma once

namespace base {

class AppSettings {
 public:
  static AppSettings* getCFLAppSettings();
};

class AppContext {
 public:
  static AppContext* getInstance();
};

class ISharedLibrary {
 public:
  virtual ~ISharedLibrary() = default;
  virtual void onInitLibrary(AppSettings* settings, AppContext* context) = 0;
  virtual void onCloseLibrary() = 0;
  virtual void onLibraryEvent() {}
  virtual void onLibraryIdle() {}
  virtual const char16_t* getLibraryName() const = 0;
};

}  // namespace base
