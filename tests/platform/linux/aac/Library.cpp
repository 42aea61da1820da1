// Something that is no module.

extern "C" int libraryFunction() {
  return 7;
}
