"""What files include is what their link line names."""

import unittest

from small_project import ProjectTest

import arrows
import cmake_targets

_SUPPORT = "orvane_library(support\n  SOURCES Log.cpp Log.h  # The log.\n)\n"
_SETTINGS = "orvane_library(settings SOURCES Store.cpp Store.h {links})"


class Arrows(ProjectTest):
    def setUp(self):
        super().setUp()
        self.write(src__support__cmake=_SUPPORT, src__support__Log_h="#include <vector>\n",
                   src__support__Log_cpp='#include "Log.h"\n')

    def write_settings(self, links, header="", source=""):
        self.write(src__settings__cmake=_SETTINGS.format(links=links),
                   src__settings__Store_h=header,
                   src__settings__Store_cpp='#include "Store.h"\n' + source)

    def problems(self):
        """Without their places, and without the examples in brackets."""
        return [problem.split(": ", 1)[1].split(" (")[0] for problem in arrows.problems_in(self.root)]

    def use_store(self, links="orvane_settings Qt6::Core"):
        """A folder on top, which makes Store.h a header that others include."""
        self.write(src__app__cmake=f"add_executable(orvane main.cpp)\n"
                                   f"target_link_libraries(orvane PRIVATE {links} orvane_compiler)",
                   src__app__main_cpp='#include "Store.h"\n#include <QString>\n')

    def test_a_good_tree(self):
        self.write_settings("LINKS orvane_support", header='#include "Log.h"\n')
        self.use_store()
        self.assertEqual(self.problems(), [])

    def test_a_missing_arrow(self):
        self.write_settings("", source='#include "Log.h"\n')
        self.assertEqual(self.problems(), ["orvane_settings: missing arrow: orvane_support"])

    def test_an_arrow_that_another_brings_along_is_missing_all_the_same(self):
        self.write_settings("LINKS orvane_support", header='#include "Log.h"\n')
        self.use_store()
        self.write(src__app__main_cpp='#include "Log.h"\n#include "Store.h"\n#include <QString>\n')
        self.assertEqual(self.problems(), ["orvane: missing arrow: orvane_support"])

    def test_a_missing_module_of_qt(self):
        self.write_settings("PRIVATE_LINKS Qt6::Core", source="#include <QColor>\n#include <QString>\n")
        self.assertEqual(self.problems(), ["orvane_settings: missing arrow: Qt6::Gui"])

    def test_a_missing_library_of_others(self):
        self.write_settings("", source="#include <soxr.h>\n#include <vector>\n")
        self.assertEqual(self.problems(), ["orvane_settings: missing arrow: PkgConfig::SOXR"])

    def test_named_in_vain(self):
        self.write_settings("LINKS orvane_support Qt6::Network PRIVATE_LINKS PkgConfig::PULSE",
                            source="#include <QString>\n")
        self.assertEqual(self.problems(), [
            "orvane_settings: named in vain: PkgConfig::PULSE",
            "orvane_settings: named in vain: Qt6::Network",
            "orvane_settings: named in vain: orvane_support"])

    def test_a_leak(self):
        self.write_settings("LINKS orvane_support", source='#include "Log.h"\n')
        self.use_store()
        self.assertEqual(self.problems(), ["orvane_settings: leaks: orvane_support"])

    def test_a_header_that_nobody_else_includes_may_need_what_is_private(self):
        self.write_settings("PRIVATE_LINKS orvane_support", header='#include "Log.h"\n')
        self.assertEqual(self.problems(), [])

    def test_a_hidden_arrow(self):
        self.write_settings("PRIVATE_LINKS orvane_support", header='#include "Log.h"\n')
        self.use_store()
        self.assertEqual(self.problems(), ["orvane_settings: hidden: orvane_support"])

    def test_against_the_road(self):
        self.write_settings("")
        self.write(src__support__cmake=_SUPPORT.replace(")", "PRIVATE_LINKS orvane_settings)"),
                   src__support__Log_cpp='#include "Log.h"\n#include "Store.h"\n')
        self.assertIn("orvane_support: against the road: orvane_settings", self.problems())

    def test_widgets_where_there_may_be_none(self):
        self.write_settings("PRIVATE_LINKS Qt6::Widgets", source="#include <QLabel>\n")
        self.assertEqual(self.problems(), ["orvane_settings: against the road: Qt6::Widgets"])

    def test_a_folder_that_nobody_knows(self):
        self.write(src__wheels__cmake="orvane_library(wheels SOURCES Wheel.h)", src__wheels__Wheel_h="")
        self.assertEqual(self.problems(), [
            "orvane_wheels: against the road: the folder wheels stands in no table"])

    def test_a_header_in_no_list(self):
        self.write_settings("", source='#include "Forgotten.h"\n')
        self.write(src__settings__Forgotten_h="")
        self.assertEqual(self.problems(), [
            "orvane_settings: no target: src/settings/Store.cpp includes Forgotten.h"])

    def test_a_list_names_what_is_not_there(self):
        self.write(src__settings__cmake="orvane_library(settings SOURCES Store.h)")
        self.assertEqual(self.problems(), ["orvane_settings: no file: src/settings/Store.h"])

    def test_a_test_names_what_it_includes(self):
        self.write_settings("")
        self.write(tests__support__cmake="add_library(orvane_test_support STATIC Wait.h)",
                   tests__support__Wait_h="",
                   tests__settings__cmake="orvane_test(settings SOURCES StoreTest.cpp LINKS orvane_settings)",
                   tests__settings__StoreTest_cpp='#include "Log.h"\n#include "Store.h"\n'
                                                  '#include "Wait.h"\n#include <gtest/gtest.h>\n')
        self.assertEqual(self.problems(), ["orvane_settings_tests: missing arrow: orvane_support"])

    def test_an_include_under_a_condition_may_be_of_another_build(self):
        self.write_settings("", source='#ifdef WITH_LOG\n#include "Log.h"\n#endif\n')
        self.assertEqual(self.problems(), [])


class Targets(ProjectTest):
    def test_functions_and_variables_of_a_file(self):
        self.write(src__cmake="""
            set(folder ${CMAKE_CURRENT_SOURCE_DIR}/inner)
            function(twice name)
              add_library(${name} STATIC ${folder}/A.cpp A.h)
              target_link_libraries(${name} PUBLIC ${ARGN} PRIVATE "orvane_compiler")
            endfunction()
            twice(one Qt6::Core)
            twice(two Qt6::Gui Qt6::Svg)
            target_sources(two PRIVATE B.h)
            foreach(name IN ITEMS three four)
              add_library(${name} A.cpp)
            endforeach()""")
        targets = cmake_targets.read_targets(self.root, [self.root / "src" / "CMakeLists.txt"])
        self.assertEqual(list(targets), ["one", "two"])
        source = self.root / "src"
        self.assertEqual(targets["two"].sources, [source / "inner" / "A.cpp", source / "A.h",
                                                  source / "B.h"])
        self.assertEqual(targets["two"].public, ["Qt6::Gui", "Qt6::Svg"])
        self.assertEqual(targets["one"].private, ["orvane_compiler"])


if __name__ == "__main__":
    unittest.main()
