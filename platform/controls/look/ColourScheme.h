#pragma once

enum class ColourScheme : unsigned char { light, dark };
