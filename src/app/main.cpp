#include "Application.h"

int main(int argc, char** argv) {
    return orv::runApplication(argc, argv);
}
