// A collector that writes as fast as it can while passes run beside it: one fresh and one expired row a table and
// round, until its input ends. Says "inserting" after the first round and the number of rounds at the end.

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "support/database.h"
#include "support/fixture_data.h"
#include "system/crowd.h"
#include "system/process_control.h"

namespace corvo::test {
namespace {

void Collect(const std::filesystem::path& directory, std::int64_t first_row) {
  std::vector<std::unique_ptr<Database>> databases;
  for (const CrowdedTable& table : kCrowdedTables) {
    databases.push_back(std::make_unique<Database>(directory / (std::string(table.database) + ".db")));
  }
  int round = 0;
  while (!InputIsReady() && round < kMaxRounds) {
    for (std::size_t index = 0; index < databases.size(); ++index) {
      databases[index]->Run(InsertRows(kCrowdedTables[index].table, first_row + round, 1, 0));
      databases[index]->Run(InsertRows(kCrowdedTables[index].table, first_row + round, 1, 400));
    }
    if (++round == 1) {
      std::cout << "inserting" << std::endl;
    }
  }
  std::cout << round << std::endl;
}

}  // namespace
}  // namespace corvo::test

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> arguments(argv, argv + argc);
    corvo::test::Collect(arguments.at(1), std::stoll(arguments.at(2)));
    return EXIT_SUCCESS;
  } catch (const std::exception& e) {
    std::cerr << e.what() << std::endl;
    return EXIT_FAILURE;
  }
}
