extern "C" int plainAnswer() {
  return 7;
}
