"""Headers are named after what they declare."""

import unittest

from small_project import ProjectTest

import names


class Names(ProjectTest):
    def problems(self, text, name="Wheel"):
        self.write(**{f"src__{name}_h": text})
        return list(names.problems_in(self.root))

    def assert_good(self, text, name="Wheel"):
        self.assertEqual(self.problems(text, name), [])

    def test_good_names(self):
        self.assert_good("namespace orv { class Wheel { public: void turn() {} }; }")
        self.assert_good("class Spoke;\nclass Wheel final : public Spoke {};")
        self.assert_good("template <typename T> class Wheel { T hub_; };")
        self.assert_good("enum class Wheel { Front, Rear };")
        self.assert_good("using Wheel = std::function<void(int)>;")
        self.assert_good("namespace orv::wheel { QString text(); }")
        self.assert_good("namespace orv { int wheel(int spokes); }")
        self.assert_good("namespace orv { void turnWheel(int spokes); int weight(); }")
        self.assert_good("class Cart::Wheel {};", "CartWheel")
        self.assert_good("class FrontWheel {};\nclass RearWheel {};", "Wheels")

    def test_a_class_of_another_name(self):
        self.assertEqual(self.problems("class TrayMenu { Wheel wheel_; };"),
                         ["src/Wheel.h: declares TrayMenu"])

    def test_a_class_whose_name_only_begins_like_the_file(self):
        self.assertEqual(self.problems("class WheelHub {};"), ["src/Wheel.h: declares WheelHub"])

    def test_an_announced_class_does_not_count(self):
        self.assertEqual(self.problems("class Wheel;\nint turn(const Wheel& wheel);"),
                         ["src/Wheel.h: declares turn"])

    def test_what_stands_in_comments_strings_and_bodies_does_not_count(self):
        self.assertEqual(self.problems('// class Wheel {};\n#define WHEEL {\n'
                                       'inline QString name() { class Wheel {}; return "Wheel {"; }'),
                         ["src/Wheel.h: declares name"])

    def test_classes_that_have_little_in_common_need_more_than_a_plural(self):
        self.assertEqual(self.problems("class Hub {};\nclass Spoke {};\nclass FrontWheel {};", "Wheels"),
                         ["src/Wheels.h: declares FrontWheel, Hub, Spoke"])


if __name__ == "__main__":
    unittest.main()
