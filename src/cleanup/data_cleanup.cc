#include "cleanup/data_cleanup.h"

DataCleanup::~DataCleanup() = default;

void DataCleanup::Configure(const char* /*input*/) {}
