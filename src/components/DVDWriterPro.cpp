#include "components/DVDWriterPro.h"

DVDWriterPro::~DVDWriterPro() = default;
