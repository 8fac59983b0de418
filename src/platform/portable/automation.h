// Late-bound objects natively: the file-system object and the shell, over the machine's own files.
//
// Names of objects and members are compared without regard to case, as late binding does.
#pragma once

#include <map>

#include "platform/portable/machine.h"

namespace ovno2::platform::portable {

class PortableAutomation : public Automation {
  public:
    explicit PortableAutomation(Machine& machine) : machine_(machine) {}

    ObjectPointer create(TextView name) override;

    // Objects that tests put in the place of the machine's, by name in lower case; null = cannot be created.
    std::map<Text, ObjectPointer> objects;

  private:
    Machine& machine_;
};

}  // namespace ovno2::platform::portable
