# The Unicode layout test checks the channel's lines against ICU's grapheme
# clusters and character properties.
target_link_libraries(formatting_channel_unicode_test PRIVATE ICU::uc)
