! The peer of namelist_bench: a NAMELIST group of 1,000 members, 500 REAL(8) scalars and
! 500 INTEGER arrays of 99 elements (50,000 values), written to and read from a file in
! the page cache. Prints ns per value. Generated; see namelist_bench.cpp for the layout.
program namelist_peer
  implicit none
  integer, parameter :: rounds = 20
  integer(8) :: start, finish, rate
  integer :: i, r
  character(len=4096) :: path
  real(8) :: v000
  real(8) :: v001
  real(8) :: v002
  real(8) :: v003
  real(8) :: v004
  real(8) :: v005
  real(8) :: v006
  real(8) :: v007
  real(8) :: v008
  real(8) :: v009
  real(8) :: v010
  real(8) :: v011
  real(8) :: v012
  real(8) :: v013
  real(8) :: v014
  real(8) :: v015
  real(8) :: v016
  real(8) :: v017
  real(8) :: v018
  real(8) :: v019
  real(8) :: v020
  real(8) :: v021
  real(8) :: v022
  real(8) :: v023
  real(8) :: v024
  real(8) :: v025
  real(8) :: v026
  real(8) :: v027
  real(8) :: v028
  real(8) :: v029
  real(8) :: v030
  real(8) :: v031
  real(8) :: v032
  real(8) :: v033
  real(8) :: v034
  real(8) :: v035
  real(8) :: v036
  real(8) :: v037
  real(8) :: v038
  real(8) :: v039
  real(8) :: v040
  real(8) :: v041
  real(8) :: v042
  real(8) :: v043
  real(8) :: v044
  real(8) :: v045
  real(8) :: v046
  real(8) :: v047
  real(8) :: v048
  real(8) :: v049
  real(8) :: v050
  real(8) :: v051
  real(8) :: v052
  real(8) :: v053
  real(8) :: v054
  real(8) :: v055
  real(8) :: v056
  real(8) :: v057
  real(8) :: v058
  real(8) :: v059
  real(8) :: v060
  real(8) :: v061
  real(8) :: v062
  real(8) :: v063
  real(8) :: v064
  real(8) :: v065
  real(8) :: v066
  real(8) :: v067
  real(8) :: v068
  real(8) :: v069
  real(8) :: v070
  real(8) :: v071
  real(8) :: v072
  real(8) :: v073
  real(8) :: v074
  real(8) :: v075
  real(8) :: v076
  real(8) :: v077
  real(8) :: v078
  real(8) :: v079
  real(8) :: v080
  real(8) :: v081
  real(8) :: v082
  real(8) :: v083
  real(8) :: v084
  real(8) :: v085
  real(8) :: v086
  real(8) :: v087
  real(8) :: v088
  real(8) :: v089
  real(8) :: v090
  real(8) :: v091
  real(8) :: v092
  real(8) :: v093
  real(8) :: v094
  real(8) :: v095
  real(8) :: v096
  real(8) :: v097
  real(8) :: v098
  real(8) :: v099
  real(8) :: v100
  real(8) :: v101
  real(8) :: v102
  real(8) :: v103
  real(8) :: v104
  real(8) :: v105
  real(8) :: v106
  real(8) :: v107
  real(8) :: v108
  real(8) :: v109
  real(8) :: v110
  real(8) :: v111
  real(8) :: v112
  real(8) :: v113
  real(8) :: v114
  real(8) :: v115
  real(8) :: v116
  real(8) :: v117
  real(8) :: v118
  real(8) :: v119
  real(8) :: v120
  real(8) :: v121
  real(8) :: v122
  real(8) :: v123
  real(8) :: v124
  real(8) :: v125
  real(8) :: v126
  real(8) :: v127
  real(8) :: v128
  real(8) :: v129
  real(8) :: v130
  real(8) :: v131
  real(8) :: v132
  real(8) :: v133
  real(8) :: v134
  real(8) :: v135
  real(8) :: v136
  real(8) :: v137
  real(8) :: v138
  real(8) :: v139
  real(8) :: v140
  real(8) :: v141
  real(8) :: v142
  real(8) :: v143
  real(8) :: v144
  real(8) :: v145
  real(8) :: v146
  real(8) :: v147
  real(8) :: v148
  real(8) :: v149
  real(8) :: v150
  real(8) :: v151
  real(8) :: v152
  real(8) :: v153
  real(8) :: v154
  real(8) :: v155
  real(8) :: v156
  real(8) :: v157
  real(8) :: v158
  real(8) :: v159
  real(8) :: v160
  real(8) :: v161
  real(8) :: v162
  real(8) :: v163
  real(8) :: v164
  real(8) :: v165
  real(8) :: v166
  real(8) :: v167
  real(8) :: v168
  real(8) :: v169
  real(8) :: v170
  real(8) :: v171
  real(8) :: v172
  real(8) :: v173
  real(8) :: v174
  real(8) :: v175
  real(8) :: v176
  real(8) :: v177
  real(8) :: v178
  real(8) :: v179
  real(8) :: v180
  real(8) :: v181
  real(8) :: v182
  real(8) :: v183
  real(8) :: v184
  real(8) :: v185
  real(8) :: v186
  real(8) :: v187
  real(8) :: v188
  real(8) :: v189
  real(8) :: v190
  real(8) :: v191
  real(8) :: v192
  real(8) :: v193
  real(8) :: v194
  real(8) :: v195
  real(8) :: v196
  real(8) :: v197
  real(8) :: v198
  real(8) :: v199
  real(8) :: v200
  real(8) :: v201
  real(8) :: v202
  real(8) :: v203
  real(8) :: v204
  real(8) :: v205
  real(8) :: v206
  real(8) :: v207
  real(8) :: v208
  real(8) :: v209
  real(8) :: v210
  real(8) :: v211
  real(8) :: v212
  real(8) :: v213
  real(8) :: v214
  real(8) :: v215
  real(8) :: v216
  real(8) :: v217
  real(8) :: v218
  real(8) :: v219
  real(8) :: v220
  real(8) :: v221
  real(8) :: v222
  real(8) :: v223
  real(8) :: v224
  real(8) :: v225
  real(8) :: v226
  real(8) :: v227
  real(8) :: v228
  real(8) :: v229
  real(8) :: v230
  real(8) :: v231
  real(8) :: v232
  real(8) :: v233
  real(8) :: v234
  real(8) :: v235
  real(8) :: v236
  real(8) :: v237
  real(8) :: v238
  real(8) :: v239
  real(8) :: v240
  real(8) :: v241
  real(8) :: v242
  real(8) :: v243
  real(8) :: v244
  real(8) :: v245
  real(8) :: v246
  real(8) :: v247
  real(8) :: v248
  real(8) :: v249
  real(8) :: v250
  real(8) :: v251
  real(8) :: v252
  real(8) :: v253
  real(8) :: v254
  real(8) :: v255
  real(8) :: v256
  real(8) :: v257
  real(8) :: v258
  real(8) :: v259
  real(8) :: v260
  real(8) :: v261
  real(8) :: v262
  real(8) :: v263
  real(8) :: v264
  real(8) :: v265
  real(8) :: v266
  real(8) :: v267
  real(8) :: v268
  real(8) :: v269
  real(8) :: v270
  real(8) :: v271
  real(8) :: v272
  real(8) :: v273
  real(8) :: v274
  real(8) :: v275
  real(8) :: v276
  real(8) :: v277
  real(8) :: v278
  real(8) :: v279
  real(8) :: v280
  real(8) :: v281
  real(8) :: v282
  real(8) :: v283
  real(8) :: v284
  real(8) :: v285
  real(8) :: v286
  real(8) :: v287
  real(8) :: v288
  real(8) :: v289
  real(8) :: v290
  real(8) :: v291
  real(8) :: v292
  real(8) :: v293
  real(8) :: v294
  real(8) :: v295
  real(8) :: v296
  real(8) :: v297
  real(8) :: v298
  real(8) :: v299
  real(8) :: v300
  real(8) :: v301
  real(8) :: v302
  real(8) :: v303
  real(8) :: v304
  real(8) :: v305
  real(8) :: v306
  real(8) :: v307
  real(8) :: v308
  real(8) :: v309
  real(8) :: v310
  real(8) :: v311
  real(8) :: v312
  real(8) :: v313
  real(8) :: v314
  real(8) :: v315
  real(8) :: v316
  real(8) :: v317
  real(8) :: v318
  real(8) :: v319
  real(8) :: v320
  real(8) :: v321
  real(8) :: v322
  real(8) :: v323
  real(8) :: v324
  real(8) :: v325
  real(8) :: v326
  real(8) :: v327
  real(8) :: v328
  real(8) :: v329
  real(8) :: v330
  real(8) :: v331
  real(8) :: v332
  real(8) :: v333
  real(8) :: v334
  real(8) :: v335
  real(8) :: v336
  real(8) :: v337
  real(8) :: v338
  real(8) :: v339
  real(8) :: v340
  real(8) :: v341
  real(8) :: v342
  real(8) :: v343
  real(8) :: v344
  real(8) :: v345
  real(8) :: v346
  real(8) :: v347
  real(8) :: v348
  real(8) :: v349
  real(8) :: v350
  real(8) :: v351
  real(8) :: v352
  real(8) :: v353
  real(8) :: v354
  real(8) :: v355
  real(8) :: v356
  real(8) :: v357
  real(8) :: v358
  real(8) :: v359
  real(8) :: v360
  real(8) :: v361
  real(8) :: v362
  real(8) :: v363
  real(8) :: v364
  real(8) :: v365
  real(8) :: v366
  real(8) :: v367
  real(8) :: v368
  real(8) :: v369
  real(8) :: v370
  real(8) :: v371
  real(8) :: v372
  real(8) :: v373
  real(8) :: v374
  real(8) :: v375
  real(8) :: v376
  real(8) :: v377
  real(8) :: v378
  real(8) :: v379
  real(8) :: v380
  real(8) :: v381
  real(8) :: v382
  real(8) :: v383
  real(8) :: v384
  real(8) :: v385
  real(8) :: v386
  real(8) :: v387
  real(8) :: v388
  real(8) :: v389
  real(8) :: v390
  real(8) :: v391
  real(8) :: v392
  real(8) :: v393
  real(8) :: v394
  real(8) :: v395
  real(8) :: v396
  real(8) :: v397
  real(8) :: v398
  real(8) :: v399
  real(8) :: v400
  real(8) :: v401
  real(8) :: v402
  real(8) :: v403
  real(8) :: v404
  real(8) :: v405
  real(8) :: v406
  real(8) :: v407
  real(8) :: v408
  real(8) :: v409
  real(8) :: v410
  real(8) :: v411
  real(8) :: v412
  real(8) :: v413
  real(8) :: v414
  real(8) :: v415
  real(8) :: v416
  real(8) :: v417
  real(8) :: v418
  real(8) :: v419
  real(8) :: v420
  real(8) :: v421
  real(8) :: v422
  real(8) :: v423
  real(8) :: v424
  real(8) :: v425
  real(8) :: v426
  real(8) :: v427
  real(8) :: v428
  real(8) :: v429
  real(8) :: v430
  real(8) :: v431
  real(8) :: v432
  real(8) :: v433
  real(8) :: v434
  real(8) :: v435
  real(8) :: v436
  real(8) :: v437
  real(8) :: v438
  real(8) :: v439
  real(8) :: v440
  real(8) :: v441
  real(8) :: v442
  real(8) :: v443
  real(8) :: v444
  real(8) :: v445
  real(8) :: v446
  real(8) :: v447
  real(8) :: v448
  real(8) :: v449
  real(8) :: v450
  real(8) :: v451
  real(8) :: v452
  real(8) :: v453
  real(8) :: v454
  real(8) :: v455
  real(8) :: v456
  real(8) :: v457
  real(8) :: v458
  real(8) :: v459
  real(8) :: v460
  real(8) :: v461
  real(8) :: v462
  real(8) :: v463
  real(8) :: v464
  real(8) :: v465
  real(8) :: v466
  real(8) :: v467
  real(8) :: v468
  real(8) :: v469
  real(8) :: v470
  real(8) :: v471
  real(8) :: v472
  real(8) :: v473
  real(8) :: v474
  real(8) :: v475
  real(8) :: v476
  real(8) :: v477
  real(8) :: v478
  real(8) :: v479
  real(8) :: v480
  real(8) :: v481
  real(8) :: v482
  real(8) :: v483
  real(8) :: v484
  real(8) :: v485
  real(8) :: v486
  real(8) :: v487
  real(8) :: v488
  real(8) :: v489
  real(8) :: v490
  real(8) :: v491
  real(8) :: v492
  real(8) :: v493
  real(8) :: v494
  real(8) :: v495
  real(8) :: v496
  real(8) :: v497
  real(8) :: v498
  real(8) :: v499
  integer :: a000(99)
  integer :: a001(99)
  integer :: a002(99)
  integer :: a003(99)
  integer :: a004(99)
  integer :: a005(99)
  integer :: a006(99)
  integer :: a007(99)
  integer :: a008(99)
  integer :: a009(99)
  integer :: a010(99)
  integer :: a011(99)
  integer :: a012(99)
  integer :: a013(99)
  integer :: a014(99)
  integer :: a015(99)
  integer :: a016(99)
  integer :: a017(99)
  integer :: a018(99)
  integer :: a019(99)
  integer :: a020(99)
  integer :: a021(99)
  integer :: a022(99)
  integer :: a023(99)
  integer :: a024(99)
  integer :: a025(99)
  integer :: a026(99)
  integer :: a027(99)
  integer :: a028(99)
  integer :: a029(99)
  integer :: a030(99)
  integer :: a031(99)
  integer :: a032(99)
  integer :: a033(99)
  integer :: a034(99)
  integer :: a035(99)
  integer :: a036(99)
  integer :: a037(99)
  integer :: a038(99)
  integer :: a039(99)
  integer :: a040(99)
  integer :: a041(99)
  integer :: a042(99)
  integer :: a043(99)
  integer :: a044(99)
  integer :: a045(99)
  integer :: a046(99)
  integer :: a047(99)
  integer :: a048(99)
  integer :: a049(99)
  integer :: a050(99)
  integer :: a051(99)
  integer :: a052(99)
  integer :: a053(99)
  integer :: a054(99)
  integer :: a055(99)
  integer :: a056(99)
  integer :: a057(99)
  integer :: a058(99)
  integer :: a059(99)
  integer :: a060(99)
  integer :: a061(99)
  integer :: a062(99)
  integer :: a063(99)
  integer :: a064(99)
  integer :: a065(99)
  integer :: a066(99)
  integer :: a067(99)
  integer :: a068(99)
  integer :: a069(99)
  integer :: a070(99)
  integer :: a071(99)
  integer :: a072(99)
  integer :: a073(99)
  integer :: a074(99)
  integer :: a075(99)
  integer :: a076(99)
  integer :: a077(99)
  integer :: a078(99)
  integer :: a079(99)
  integer :: a080(99)
  integer :: a081(99)
  integer :: a082(99)
  integer :: a083(99)
  integer :: a084(99)
  integer :: a085(99)
  integer :: a086(99)
  integer :: a087(99)
  integer :: a088(99)
  integer :: a089(99)
  integer :: a090(99)
  integer :: a091(99)
  integer :: a092(99)
  integer :: a093(99)
  integer :: a094(99)
  integer :: a095(99)
  integer :: a096(99)
  integer :: a097(99)
  integer :: a098(99)
  integer :: a099(99)
  integer :: a100(99)
  integer :: a101(99)
  integer :: a102(99)
  integer :: a103(99)
  integer :: a104(99)
  integer :: a105(99)
  integer :: a106(99)
  integer :: a107(99)
  integer :: a108(99)
  integer :: a109(99)
  integer :: a110(99)
  integer :: a111(99)
  integer :: a112(99)
  integer :: a113(99)
  integer :: a114(99)
  integer :: a115(99)
  integer :: a116(99)
  integer :: a117(99)
  integer :: a118(99)
  integer :: a119(99)
  integer :: a120(99)
  integer :: a121(99)
  integer :: a122(99)
  integer :: a123(99)
  integer :: a124(99)
  integer :: a125(99)
  integer :: a126(99)
  integer :: a127(99)
  integer :: a128(99)
  integer :: a129(99)
  integer :: a130(99)
  integer :: a131(99)
  integer :: a132(99)
  integer :: a133(99)
  integer :: a134(99)
  integer :: a135(99)
  integer :: a136(99)
  integer :: a137(99)
  integer :: a138(99)
  integer :: a139(99)
  integer :: a140(99)
  integer :: a141(99)
  integer :: a142(99)
  integer :: a143(99)
  integer :: a144(99)
  integer :: a145(99)
  integer :: a146(99)
  integer :: a147(99)
  integer :: a148(99)
  integer :: a149(99)
  integer :: a150(99)
  integer :: a151(99)
  integer :: a152(99)
  integer :: a153(99)
  integer :: a154(99)
  integer :: a155(99)
  integer :: a156(99)
  integer :: a157(99)
  integer :: a158(99)
  integer :: a159(99)
  integer :: a160(99)
  integer :: a161(99)
  integer :: a162(99)
  integer :: a163(99)
  integer :: a164(99)
  integer :: a165(99)
  integer :: a166(99)
  integer :: a167(99)
  integer :: a168(99)
  integer :: a169(99)
  integer :: a170(99)
  integer :: a171(99)
  integer :: a172(99)
  integer :: a173(99)
  integer :: a174(99)
  integer :: a175(99)
  integer :: a176(99)
  integer :: a177(99)
  integer :: a178(99)
  integer :: a179(99)
  integer :: a180(99)
  integer :: a181(99)
  integer :: a182(99)
  integer :: a183(99)
  integer :: a184(99)
  integer :: a185(99)
  integer :: a186(99)
  integer :: a187(99)
  integer :: a188(99)
  integer :: a189(99)
  integer :: a190(99)
  integer :: a191(99)
  integer :: a192(99)
  integer :: a193(99)
  integer :: a194(99)
  integer :: a195(99)
  integer :: a196(99)
  integer :: a197(99)
  integer :: a198(99)
  integer :: a199(99)
  integer :: a200(99)
  integer :: a201(99)
  integer :: a202(99)
  integer :: a203(99)
  integer :: a204(99)
  integer :: a205(99)
  integer :: a206(99)
  integer :: a207(99)
  integer :: a208(99)
  integer :: a209(99)
  integer :: a210(99)
  integer :: a211(99)
  integer :: a212(99)
  integer :: a213(99)
  integer :: a214(99)
  integer :: a215(99)
  integer :: a216(99)
  integer :: a217(99)
  integer :: a218(99)
  integer :: a219(99)
  integer :: a220(99)
  integer :: a221(99)
  integer :: a222(99)
  integer :: a223(99)
  integer :: a224(99)
  integer :: a225(99)
  integer :: a226(99)
  integer :: a227(99)
  integer :: a228(99)
  integer :: a229(99)
  integer :: a230(99)
  integer :: a231(99)
  integer :: a232(99)
  integer :: a233(99)
  integer :: a234(99)
  integer :: a235(99)
  integer :: a236(99)
  integer :: a237(99)
  integer :: a238(99)
  integer :: a239(99)
  integer :: a240(99)
  integer :: a241(99)
  integer :: a242(99)
  integer :: a243(99)
  integer :: a244(99)
  integer :: a245(99)
  integer :: a246(99)
  integer :: a247(99)
  integer :: a248(99)
  integer :: a249(99)
  integer :: a250(99)
  integer :: a251(99)
  integer :: a252(99)
  integer :: a253(99)
  integer :: a254(99)
  integer :: a255(99)
  integer :: a256(99)
  integer :: a257(99)
  integer :: a258(99)
  integer :: a259(99)
  integer :: a260(99)
  integer :: a261(99)
  integer :: a262(99)
  integer :: a263(99)
  integer :: a264(99)
  integer :: a265(99)
  integer :: a266(99)
  integer :: a267(99)
  integer :: a268(99)
  integer :: a269(99)
  integer :: a270(99)
  integer :: a271(99)
  integer :: a272(99)
  integer :: a273(99)
  integer :: a274(99)
  integer :: a275(99)
  integer :: a276(99)
  integer :: a277(99)
  integer :: a278(99)
  integer :: a279(99)
  integer :: a280(99)
  integer :: a281(99)
  integer :: a282(99)
  integer :: a283(99)
  integer :: a284(99)
  integer :: a285(99)
  integer :: a286(99)
  integer :: a287(99)
  integer :: a288(99)
  integer :: a289(99)
  integer :: a290(99)
  integer :: a291(99)
  integer :: a292(99)
  integer :: a293(99)
  integer :: a294(99)
  integer :: a295(99)
  integer :: a296(99)
  integer :: a297(99)
  integer :: a298(99)
  integer :: a299(99)
  integer :: a300(99)
  integer :: a301(99)
  integer :: a302(99)
  integer :: a303(99)
  integer :: a304(99)
  integer :: a305(99)
  integer :: a306(99)
  integer :: a307(99)
  integer :: a308(99)
  integer :: a309(99)
  integer :: a310(99)
  integer :: a311(99)
  integer :: a312(99)
  integer :: a313(99)
  integer :: a314(99)
  integer :: a315(99)
  integer :: a316(99)
  integer :: a317(99)
  integer :: a318(99)
  integer :: a319(99)
  integer :: a320(99)
  integer :: a321(99)
  integer :: a322(99)
  integer :: a323(99)
  integer :: a324(99)
  integer :: a325(99)
  integer :: a326(99)
  integer :: a327(99)
  integer :: a328(99)
  integer :: a329(99)
  integer :: a330(99)
  integer :: a331(99)
  integer :: a332(99)
  integer :: a333(99)
  integer :: a334(99)
  integer :: a335(99)
  integer :: a336(99)
  integer :: a337(99)
  integer :: a338(99)
  integer :: a339(99)
  integer :: a340(99)
  integer :: a341(99)
  integer :: a342(99)
  integer :: a343(99)
  integer :: a344(99)
  integer :: a345(99)
  integer :: a346(99)
  integer :: a347(99)
  integer :: a348(99)
  integer :: a349(99)
  integer :: a350(99)
  integer :: a351(99)
  integer :: a352(99)
  integer :: a353(99)
  integer :: a354(99)
  integer :: a355(99)
  integer :: a356(99)
  integer :: a357(99)
  integer :: a358(99)
  integer :: a359(99)
  integer :: a360(99)
  integer :: a361(99)
  integer :: a362(99)
  integer :: a363(99)
  integer :: a364(99)
  integer :: a365(99)
  integer :: a366(99)
  integer :: a367(99)
  integer :: a368(99)
  integer :: a369(99)
  integer :: a370(99)
  integer :: a371(99)
  integer :: a372(99)
  integer :: a373(99)
  integer :: a374(99)
  integer :: a375(99)
  integer :: a376(99)
  integer :: a377(99)
  integer :: a378(99)
  integer :: a379(99)
  integer :: a380(99)
  integer :: a381(99)
  integer :: a382(99)
  integer :: a383(99)
  integer :: a384(99)
  integer :: a385(99)
  integer :: a386(99)
  integer :: a387(99)
  integer :: a388(99)
  integer :: a389(99)
  integer :: a390(99)
  integer :: a391(99)
  integer :: a392(99)
  integer :: a393(99)
  integer :: a394(99)
  integer :: a395(99)
  integer :: a396(99)
  integer :: a397(99)
  integer :: a398(99)
  integer :: a399(99)
  integer :: a400(99)
  integer :: a401(99)
  integer :: a402(99)
  integer :: a403(99)
  integer :: a404(99)
  integer :: a405(99)
  integer :: a406(99)
  integer :: a407(99)
  integer :: a408(99)
  integer :: a409(99)
  integer :: a410(99)
  integer :: a411(99)
  integer :: a412(99)
  integer :: a413(99)
  integer :: a414(99)
  integer :: a415(99)
  integer :: a416(99)
  integer :: a417(99)
  integer :: a418(99)
  integer :: a419(99)
  integer :: a420(99)
  integer :: a421(99)
  integer :: a422(99)
  integer :: a423(99)
  integer :: a424(99)
  integer :: a425(99)
  integer :: a426(99)
  integer :: a427(99)
  integer :: a428(99)
  integer :: a429(99)
  integer :: a430(99)
  integer :: a431(99)
  integer :: a432(99)
  integer :: a433(99)
  integer :: a434(99)
  integer :: a435(99)
  integer :: a436(99)
  integer :: a437(99)
  integer :: a438(99)
  integer :: a439(99)
  integer :: a440(99)
  integer :: a441(99)
  integer :: a442(99)
  integer :: a443(99)
  integer :: a444(99)
  integer :: a445(99)
  integer :: a446(99)
  integer :: a447(99)
  integer :: a448(99)
  integer :: a449(99)
  integer :: a450(99)
  integer :: a451(99)
  integer :: a452(99)
  integer :: a453(99)
  integer :: a454(99)
  integer :: a455(99)
  integer :: a456(99)
  integer :: a457(99)
  integer :: a458(99)
  integer :: a459(99)
  integer :: a460(99)
  integer :: a461(99)
  integer :: a462(99)
  integer :: a463(99)
  integer :: a464(99)
  integer :: a465(99)
  integer :: a466(99)
  integer :: a467(99)
  integer :: a468(99)
  integer :: a469(99)
  integer :: a470(99)
  integer :: a471(99)
  integer :: a472(99)
  integer :: a473(99)
  integer :: a474(99)
  integer :: a475(99)
  integer :: a476(99)
  integer :: a477(99)
  integer :: a478(99)
  integer :: a479(99)
  integer :: a480(99)
  integer :: a481(99)
  integer :: a482(99)
  integer :: a483(99)
  integer :: a484(99)
  integer :: a485(99)
  integer :: a486(99)
  integer :: a487(99)
  integer :: a488(99)
  integer :: a489(99)
  integer :: a490(99)
  integer :: a491(99)
  integer :: a492(99)
  integer :: a493(99)
  integer :: a494(99)
  integer :: a495(99)
  integer :: a496(99)
  integer :: a497(99)
  integer :: a498(99)
  integer :: a499(99)
  namelist /big/ v000, v001, v002, v003, v004, v005, v006, v007, v008, v009, &
    v010, v011, v012, v013, v014, v015, v016, v017, v018, v019, &
    v020, v021, v022, v023, v024, v025, v026, v027, v028, v029, &
    v030, v031, v032, v033, v034, v035, v036, v037, v038, v039, &
    v040, v041, v042, v043, v044, v045, v046, v047, v048, v049, &
    v050, v051, v052, v053, v054, v055, v056, v057, v058, v059, &
    v060, v061, v062, v063, v064, v065, v066, v067, v068, v069, &
    v070, v071, v072, v073, v074, v075, v076, v077, v078, v079, &
    v080, v081, v082, v083, v084, v085, v086, v087, v088, v089, &
    v090, v091, v092, v093, v094, v095, v096, v097, v098, v099, &
    v100, v101, v102, v103, v104, v105, v106, v107, v108, v109, &
    v110, v111, v112, v113, v114, v115, v116, v117, v118, v119, &
    v120, v121, v122, v123, v124, v125, v126, v127, v128, v129, &
    v130, v131, v132, v133, v134, v135, v136, v137, v138, v139, &
    v140, v141, v142, v143, v144, v145, v146, v147, v148, v149, &
    v150, v151, v152, v153, v154, v155, v156, v157, v158, v159, &
    v160, v161, v162, v163, v164, v165, v166, v167, v168, v169, &
    v170, v171, v172, v173, v174, v175, v176, v177, v178, v179, &
    v180, v181, v182, v183, v184, v185, v186, v187, v188, v189, &
    v190, v191, v192, v193, v194, v195, v196, v197, v198, v199, &
    v200, v201, v202, v203, v204, v205, v206, v207, v208, v209, &
    v210, v211, v212, v213, v214, v215, v216, v217, v218, v219, &
    v220, v221, v222, v223, v224, v225, v226, v227, v228, v229, &
    v230, v231, v232, v233, v234, v235, v236, v237, v238, v239, &
    v240, v241, v242, v243, v244, v245, v246, v247, v248, v249, &
    v250, v251, v252, v253, v254, v255, v256, v257, v258, v259, &
    v260, v261, v262, v263, v264, v265, v266, v267, v268, v269, &
    v270, v271, v272, v273, v274, v275, v276, v277, v278, v279, &
    v280, v281, v282, v283, v284, v285, v286, v287, v288, v289, &
    v290, v291, v292, v293, v294, v295, v296, v297, v298, v299, &
    v300, v301, v302, v303, v304, v305, v306, v307, v308, v309, &
    v310, v311, v312, v313, v314, v315, v316, v317, v318, v319, &
    v320, v321, v322, v323, v324, v325, v326, v327, v328, v329, &
    v330, v331, v332, v333, v334, v335, v336, v337, v338, v339, &
    v340, v341, v342, v343, v344, v345, v346, v347, v348, v349, &
    v350, v351, v352, v353, v354, v355, v356, v357, v358, v359, &
    v360, v361, v362, v363, v364, v365, v366, v367, v368, v369, &
    v370, v371, v372, v373, v374, v375, v376, v377, v378, v379, &
    v380, v381, v382, v383, v384, v385, v386, v387, v388, v389, &
    v390, v391, v392, v393, v394, v395, v396, v397, v398, v399, &
    v400, v401, v402, v403, v404, v405, v406, v407, v408, v409, &
    v410, v411, v412, v413, v414, v415, v416, v417, v418, v419, &
    v420, v421, v422, v423, v424, v425, v426, v427, v428, v429, &
    v430, v431, v432, v433, v434, v435, v436, v437, v438, v439, &
    v440, v441, v442, v443, v444, v445, v446, v447, v448, v449, &
    v450, v451, v452, v453, v454, v455, v456, v457, v458, v459, &
    v460, v461, v462, v463, v464, v465, v466, v467, v468, v469, &
    v470, v471, v472, v473, v474, v475, v476, v477, v478, v479, &
    v480, v481, v482, v483, v484, v485, v486, v487, v488, v489, &
    v490, v491, v492, v493, v494, v495, v496, v497, v498, v499, &
    a000, a001, a002, a003, a004, a005, a006, a007, a008, a009, &
    a010, a011, a012, a013, a014, a015, a016, a017, a018, a019, &
    a020, a021, a022, a023, a024, a025, a026, a027, a028, a029, &
    a030, a031, a032, a033, a034, a035, a036, a037, a038, a039, &
    a040, a041, a042, a043, a044, a045, a046, a047, a048, a049, &
    a050, a051, a052, a053, a054, a055, a056, a057, a058, a059, &
    a060, a061, a062, a063, a064, a065, a066, a067, a068, a069, &
    a070, a071, a072, a073, a074, a075, a076, a077, a078, a079, &
    a080, a081, a082, a083, a084, a085, a086, a087, a088, a089, &
    a090, a091, a092, a093, a094, a095, a096, a097, a098, a099, &
    a100, a101, a102, a103, a104, a105, a106, a107, a108, a109, &
    a110, a111, a112, a113, a114, a115, a116, a117, a118, a119, &
    a120, a121, a122, a123, a124, a125, a126, a127, a128, a129, &
    a130, a131, a132, a133, a134, a135, a136, a137, a138, a139, &
    a140, a141, a142, a143, a144, a145, a146, a147, a148, a149, &
    a150, a151, a152, a153, a154, a155, a156, a157, a158, a159, &
    a160, a161, a162, a163, a164, a165, a166, a167, a168, a169, &
    a170, a171, a172, a173, a174, a175, a176, a177, a178, a179, &
    a180, a181, a182, a183, a184, a185, a186, a187, a188, a189, &
    a190, a191, a192, a193, a194, a195, a196, a197, a198, a199, &
    a200, a201, a202, a203, a204, a205, a206, a207, a208, a209, &
    a210, a211, a212, a213, a214, a215, a216, a217, a218, a219, &
    a220, a221, a222, a223, a224, a225, a226, a227, a228, a229, &
    a230, a231, a232, a233, a234, a235, a236, a237, a238, a239, &
    a240, a241, a242, a243, a244, a245, a246, a247, a248, a249, &
    a250, a251, a252, a253, a254, a255, a256, a257, a258, a259, &
    a260, a261, a262, a263, a264, a265, a266, a267, a268, a269, &
    a270, a271, a272, a273, a274, a275, a276, a277, a278, a279, &
    a280, a281, a282, a283, a284, a285, a286, a287, a288, a289, &
    a290, a291, a292, a293, a294, a295, a296, a297, a298, a299, &
    a300, a301, a302, a303, a304, a305, a306, a307, a308, a309, &
    a310, a311, a312, a313, a314, a315, a316, a317, a318, a319, &
    a320, a321, a322, a323, a324, a325, a326, a327, a328, a329, &
    a330, a331, a332, a333, a334, a335, a336, a337, a338, a339, &
    a340, a341, a342, a343, a344, a345, a346, a347, a348, a349, &
    a350, a351, a352, a353, a354, a355, a356, a357, a358, a359, &
    a360, a361, a362, a363, a364, a365, a366, a367, a368, a369, &
    a370, a371, a372, a373, a374, a375, a376, a377, a378, a379, &
    a380, a381, a382, a383, a384, a385, a386, a387, a388, a389, &
    a390, a391, a392, a393, a394, a395, a396, a397, a398, a399, &
    a400, a401, a402, a403, a404, a405, a406, a407, a408, a409, &
    a410, a411, a412, a413, a414, a415, a416, a417, a418, a419, &
    a420, a421, a422, a423, a424, a425, a426, a427, a428, a429, &
    a430, a431, a432, a433, a434, a435, a436, a437, a438, a439, &
    a440, a441, a442, a443, a444, a445, a446, a447, a448, a449, &
    a450, a451, a452, a453, a454, a455, a456, a457, a458, a459, &
    a460, a461, a462, a463, a464, a465, a466, a467, a468, a469, &
    a470, a471, a472, a473, a474, a475, a476, a477, a478, a479, &
    a480, a481, a482, a483, a484, a485, a486, a487, a488, a489, &
    a490, a491, a492, a493, a494, a495, a496, a497, a498, a499
  call get_command_argument(1, path)
  v000 = 0.25d0 * 1.5d0 ; a000 = [(i * 1, i = 1, 99)]
  v001 = 1.25d0 * 1.5d0 ; a001 = [(i * 2, i = 1, 99)]
  v002 = 2.25d0 * 1.5d0 ; a002 = [(i * 3, i = 1, 99)]
  v003 = 3.25d0 * 1.5d0 ; a003 = [(i * 4, i = 1, 99)]
  v004 = 4.25d0 * 1.5d0 ; a004 = [(i * 5, i = 1, 99)]
  v005 = 5.25d0 * 1.5d0 ; a005 = [(i * 6, i = 1, 99)]
  v006 = 6.25d0 * 1.5d0 ; a006 = [(i * 7, i = 1, 99)]
  v007 = 7.25d0 * 1.5d0 ; a007 = [(i * 8, i = 1, 99)]
  v008 = 8.25d0 * 1.5d0 ; a008 = [(i * 9, i = 1, 99)]
  v009 = 9.25d0 * 1.5d0 ; a009 = [(i * 10, i = 1, 99)]
  v010 = 10.25d0 * 1.5d0 ; a010 = [(i * 11, i = 1, 99)]
  v011 = 11.25d0 * 1.5d0 ; a011 = [(i * 12, i = 1, 99)]
  v012 = 12.25d0 * 1.5d0 ; a012 = [(i * 13, i = 1, 99)]
  v013 = 13.25d0 * 1.5d0 ; a013 = [(i * 14, i = 1, 99)]
  v014 = 14.25d0 * 1.5d0 ; a014 = [(i * 15, i = 1, 99)]
  v015 = 15.25d0 * 1.5d0 ; a015 = [(i * 16, i = 1, 99)]
  v016 = 16.25d0 * 1.5d0 ; a016 = [(i * 17, i = 1, 99)]
  v017 = 17.25d0 * 1.5d0 ; a017 = [(i * 18, i = 1, 99)]
  v018 = 18.25d0 * 1.5d0 ; a018 = [(i * 19, i = 1, 99)]
  v019 = 19.25d0 * 1.5d0 ; a019 = [(i * 20, i = 1, 99)]
  v020 = 20.25d0 * 1.5d0 ; a020 = [(i * 21, i = 1, 99)]
  v021 = 21.25d0 * 1.5d0 ; a021 = [(i * 22, i = 1, 99)]
  v022 = 22.25d0 * 1.5d0 ; a022 = [(i * 23, i = 1, 99)]
  v023 = 23.25d0 * 1.5d0 ; a023 = [(i * 24, i = 1, 99)]
  v024 = 24.25d0 * 1.5d0 ; a024 = [(i * 25, i = 1, 99)]
  v025 = 25.25d0 * 1.5d0 ; a025 = [(i * 26, i = 1, 99)]
  v026 = 26.25d0 * 1.5d0 ; a026 = [(i * 27, i = 1, 99)]
  v027 = 27.25d0 * 1.5d0 ; a027 = [(i * 28, i = 1, 99)]
  v028 = 28.25d0 * 1.5d0 ; a028 = [(i * 29, i = 1, 99)]
  v029 = 29.25d0 * 1.5d0 ; a029 = [(i * 30, i = 1, 99)]
  v030 = 30.25d0 * 1.5d0 ; a030 = [(i * 31, i = 1, 99)]
  v031 = 31.25d0 * 1.5d0 ; a031 = [(i * 32, i = 1, 99)]
  v032 = 32.25d0 * 1.5d0 ; a032 = [(i * 33, i = 1, 99)]
  v033 = 33.25d0 * 1.5d0 ; a033 = [(i * 34, i = 1, 99)]
  v034 = 34.25d0 * 1.5d0 ; a034 = [(i * 35, i = 1, 99)]
  v035 = 35.25d0 * 1.5d0 ; a035 = [(i * 36, i = 1, 99)]
  v036 = 36.25d0 * 1.5d0 ; a036 = [(i * 37, i = 1, 99)]
  v037 = 37.25d0 * 1.5d0 ; a037 = [(i * 38, i = 1, 99)]
  v038 = 38.25d0 * 1.5d0 ; a038 = [(i * 39, i = 1, 99)]
  v039 = 39.25d0 * 1.5d0 ; a039 = [(i * 40, i = 1, 99)]
  v040 = 40.25d0 * 1.5d0 ; a040 = [(i * 41, i = 1, 99)]
  v041 = 41.25d0 * 1.5d0 ; a041 = [(i * 42, i = 1, 99)]
  v042 = 42.25d0 * 1.5d0 ; a042 = [(i * 43, i = 1, 99)]
  v043 = 43.25d0 * 1.5d0 ; a043 = [(i * 44, i = 1, 99)]
  v044 = 44.25d0 * 1.5d0 ; a044 = [(i * 45, i = 1, 99)]
  v045 = 45.25d0 * 1.5d0 ; a045 = [(i * 46, i = 1, 99)]
  v046 = 46.25d0 * 1.5d0 ; a046 = [(i * 47, i = 1, 99)]
  v047 = 47.25d0 * 1.5d0 ; a047 = [(i * 48, i = 1, 99)]
  v048 = 48.25d0 * 1.5d0 ; a048 = [(i * 49, i = 1, 99)]
  v049 = 49.25d0 * 1.5d0 ; a049 = [(i * 50, i = 1, 99)]
  v050 = 50.25d0 * 1.5d0 ; a050 = [(i * 51, i = 1, 99)]
  v051 = 51.25d0 * 1.5d0 ; a051 = [(i * 52, i = 1, 99)]
  v052 = 52.25d0 * 1.5d0 ; a052 = [(i * 53, i = 1, 99)]
  v053 = 53.25d0 * 1.5d0 ; a053 = [(i * 54, i = 1, 99)]
  v054 = 54.25d0 * 1.5d0 ; a054 = [(i * 55, i = 1, 99)]
  v055 = 55.25d0 * 1.5d0 ; a055 = [(i * 56, i = 1, 99)]
  v056 = 56.25d0 * 1.5d0 ; a056 = [(i * 57, i = 1, 99)]
  v057 = 57.25d0 * 1.5d0 ; a057 = [(i * 58, i = 1, 99)]
  v058 = 58.25d0 * 1.5d0 ; a058 = [(i * 59, i = 1, 99)]
  v059 = 59.25d0 * 1.5d0 ; a059 = [(i * 60, i = 1, 99)]
  v060 = 60.25d0 * 1.5d0 ; a060 = [(i * 61, i = 1, 99)]
  v061 = 61.25d0 * 1.5d0 ; a061 = [(i * 62, i = 1, 99)]
  v062 = 62.25d0 * 1.5d0 ; a062 = [(i * 63, i = 1, 99)]
  v063 = 63.25d0 * 1.5d0 ; a063 = [(i * 64, i = 1, 99)]
  v064 = 64.25d0 * 1.5d0 ; a064 = [(i * 65, i = 1, 99)]
  v065 = 65.25d0 * 1.5d0 ; a065 = [(i * 66, i = 1, 99)]
  v066 = 66.25d0 * 1.5d0 ; a066 = [(i * 67, i = 1, 99)]
  v067 = 67.25d0 * 1.5d0 ; a067 = [(i * 68, i = 1, 99)]
  v068 = 68.25d0 * 1.5d0 ; a068 = [(i * 69, i = 1, 99)]
  v069 = 69.25d0 * 1.5d0 ; a069 = [(i * 70, i = 1, 99)]
  v070 = 70.25d0 * 1.5d0 ; a070 = [(i * 71, i = 1, 99)]
  v071 = 71.25d0 * 1.5d0 ; a071 = [(i * 72, i = 1, 99)]
  v072 = 72.25d0 * 1.5d0 ; a072 = [(i * 73, i = 1, 99)]
  v073 = 73.25d0 * 1.5d0 ; a073 = [(i * 74, i = 1, 99)]
  v074 = 74.25d0 * 1.5d0 ; a074 = [(i * 75, i = 1, 99)]
  v075 = 75.25d0 * 1.5d0 ; a075 = [(i * 76, i = 1, 99)]
  v076 = 76.25d0 * 1.5d0 ; a076 = [(i * 77, i = 1, 99)]
  v077 = 77.25d0 * 1.5d0 ; a077 = [(i * 78, i = 1, 99)]
  v078 = 78.25d0 * 1.5d0 ; a078 = [(i * 79, i = 1, 99)]
  v079 = 79.25d0 * 1.5d0 ; a079 = [(i * 80, i = 1, 99)]
  v080 = 80.25d0 * 1.5d0 ; a080 = [(i * 81, i = 1, 99)]
  v081 = 81.25d0 * 1.5d0 ; a081 = [(i * 82, i = 1, 99)]
  v082 = 82.25d0 * 1.5d0 ; a082 = [(i * 83, i = 1, 99)]
  v083 = 83.25d0 * 1.5d0 ; a083 = [(i * 84, i = 1, 99)]
  v084 = 84.25d0 * 1.5d0 ; a084 = [(i * 85, i = 1, 99)]
  v085 = 85.25d0 * 1.5d0 ; a085 = [(i * 86, i = 1, 99)]
  v086 = 86.25d0 * 1.5d0 ; a086 = [(i * 87, i = 1, 99)]
  v087 = 87.25d0 * 1.5d0 ; a087 = [(i * 88, i = 1, 99)]
  v088 = 88.25d0 * 1.5d0 ; a088 = [(i * 89, i = 1, 99)]
  v089 = 89.25d0 * 1.5d0 ; a089 = [(i * 90, i = 1, 99)]
  v090 = 90.25d0 * 1.5d0 ; a090 = [(i * 91, i = 1, 99)]
  v091 = 91.25d0 * 1.5d0 ; a091 = [(i * 92, i = 1, 99)]
  v092 = 92.25d0 * 1.5d0 ; a092 = [(i * 93, i = 1, 99)]
  v093 = 93.25d0 * 1.5d0 ; a093 = [(i * 94, i = 1, 99)]
  v094 = 94.25d0 * 1.5d0 ; a094 = [(i * 95, i = 1, 99)]
  v095 = 95.25d0 * 1.5d0 ; a095 = [(i * 96, i = 1, 99)]
  v096 = 96.25d0 * 1.5d0 ; a096 = [(i * 97, i = 1, 99)]
  v097 = 97.25d0 * 1.5d0 ; a097 = [(i * 98, i = 1, 99)]
  v098 = 98.25d0 * 1.5d0 ; a098 = [(i * 99, i = 1, 99)]
  v099 = 99.25d0 * 1.5d0 ; a099 = [(i * 100, i = 1, 99)]
  v100 = 100.25d0 * 1.5d0 ; a100 = [(i * 101, i = 1, 99)]
  v101 = 101.25d0 * 1.5d0 ; a101 = [(i * 102, i = 1, 99)]
  v102 = 102.25d0 * 1.5d0 ; a102 = [(i * 103, i = 1, 99)]
  v103 = 103.25d0 * 1.5d0 ; a103 = [(i * 104, i = 1, 99)]
  v104 = 104.25d0 * 1.5d0 ; a104 = [(i * 105, i = 1, 99)]
  v105 = 105.25d0 * 1.5d0 ; a105 = [(i * 106, i = 1, 99)]
  v106 = 106.25d0 * 1.5d0 ; a106 = [(i * 107, i = 1, 99)]
  v107 = 107.25d0 * 1.5d0 ; a107 = [(i * 108, i = 1, 99)]
  v108 = 108.25d0 * 1.5d0 ; a108 = [(i * 109, i = 1, 99)]
  v109 = 109.25d0 * 1.5d0 ; a109 = [(i * 110, i = 1, 99)]
  v110 = 110.25d0 * 1.5d0 ; a110 = [(i * 111, i = 1, 99)]
  v111 = 111.25d0 * 1.5d0 ; a111 = [(i * 112, i = 1, 99)]
  v112 = 112.25d0 * 1.5d0 ; a112 = [(i * 113, i = 1, 99)]
  v113 = 113.25d0 * 1.5d0 ; a113 = [(i * 114, i = 1, 99)]
  v114 = 114.25d0 * 1.5d0 ; a114 = [(i * 115, i = 1, 99)]
  v115 = 115.25d0 * 1.5d0 ; a115 = [(i * 116, i = 1, 99)]
  v116 = 116.25d0 * 1.5d0 ; a116 = [(i * 117, i = 1, 99)]
  v117 = 117.25d0 * 1.5d0 ; a117 = [(i * 118, i = 1, 99)]
  v118 = 118.25d0 * 1.5d0 ; a118 = [(i * 119, i = 1, 99)]
  v119 = 119.25d0 * 1.5d0 ; a119 = [(i * 120, i = 1, 99)]
  v120 = 120.25d0 * 1.5d0 ; a120 = [(i * 121, i = 1, 99)]
  v121 = 121.25d0 * 1.5d0 ; a121 = [(i * 122, i = 1, 99)]
  v122 = 122.25d0 * 1.5d0 ; a122 = [(i * 123, i = 1, 99)]
  v123 = 123.25d0 * 1.5d0 ; a123 = [(i * 124, i = 1, 99)]
  v124 = 124.25d0 * 1.5d0 ; a124 = [(i * 125, i = 1, 99)]
  v125 = 125.25d0 * 1.5d0 ; a125 = [(i * 126, i = 1, 99)]
  v126 = 126.25d0 * 1.5d0 ; a126 = [(i * 127, i = 1, 99)]
  v127 = 127.25d0 * 1.5d0 ; a127 = [(i * 128, i = 1, 99)]
  v128 = 128.25d0 * 1.5d0 ; a128 = [(i * 129, i = 1, 99)]
  v129 = 129.25d0 * 1.5d0 ; a129 = [(i * 130, i = 1, 99)]
  v130 = 130.25d0 * 1.5d0 ; a130 = [(i * 131, i = 1, 99)]
  v131 = 131.25d0 * 1.5d0 ; a131 = [(i * 132, i = 1, 99)]
  v132 = 132.25d0 * 1.5d0 ; a132 = [(i * 133, i = 1, 99)]
  v133 = 133.25d0 * 1.5d0 ; a133 = [(i * 134, i = 1, 99)]
  v134 = 134.25d0 * 1.5d0 ; a134 = [(i * 135, i = 1, 99)]
  v135 = 135.25d0 * 1.5d0 ; a135 = [(i * 136, i = 1, 99)]
  v136 = 136.25d0 * 1.5d0 ; a136 = [(i * 137, i = 1, 99)]
  v137 = 137.25d0 * 1.5d0 ; a137 = [(i * 138, i = 1, 99)]
  v138 = 138.25d0 * 1.5d0 ; a138 = [(i * 139, i = 1, 99)]
  v139 = 139.25d0 * 1.5d0 ; a139 = [(i * 140, i = 1, 99)]
  v140 = 140.25d0 * 1.5d0 ; a140 = [(i * 141, i = 1, 99)]
  v141 = 141.25d0 * 1.5d0 ; a141 = [(i * 142, i = 1, 99)]
  v142 = 142.25d0 * 1.5d0 ; a142 = [(i * 143, i = 1, 99)]
  v143 = 143.25d0 * 1.5d0 ; a143 = [(i * 144, i = 1, 99)]
  v144 = 144.25d0 * 1.5d0 ; a144 = [(i * 145, i = 1, 99)]
  v145 = 145.25d0 * 1.5d0 ; a145 = [(i * 146, i = 1, 99)]
  v146 = 146.25d0 * 1.5d0 ; a146 = [(i * 147, i = 1, 99)]
  v147 = 147.25d0 * 1.5d0 ; a147 = [(i * 148, i = 1, 99)]
  v148 = 148.25d0 * 1.5d0 ; a148 = [(i * 149, i = 1, 99)]
  v149 = 149.25d0 * 1.5d0 ; a149 = [(i * 150, i = 1, 99)]
  v150 = 150.25d0 * 1.5d0 ; a150 = [(i * 151, i = 1, 99)]
  v151 = 151.25d0 * 1.5d0 ; a151 = [(i * 152, i = 1, 99)]
  v152 = 152.25d0 * 1.5d0 ; a152 = [(i * 153, i = 1, 99)]
  v153 = 153.25d0 * 1.5d0 ; a153 = [(i * 154, i = 1, 99)]
  v154 = 154.25d0 * 1.5d0 ; a154 = [(i * 155, i = 1, 99)]
  v155 = 155.25d0 * 1.5d0 ; a155 = [(i * 156, i = 1, 99)]
  v156 = 156.25d0 * 1.5d0 ; a156 = [(i * 157, i = 1, 99)]
  v157 = 157.25d0 * 1.5d0 ; a157 = [(i * 158, i = 1, 99)]
  v158 = 158.25d0 * 1.5d0 ; a158 = [(i * 159, i = 1, 99)]
  v159 = 159.25d0 * 1.5d0 ; a159 = [(i * 160, i = 1, 99)]
  v160 = 160.25d0 * 1.5d0 ; a160 = [(i * 161, i = 1, 99)]
  v161 = 161.25d0 * 1.5d0 ; a161 = [(i * 162, i = 1, 99)]
  v162 = 162.25d0 * 1.5d0 ; a162 = [(i * 163, i = 1, 99)]
  v163 = 163.25d0 * 1.5d0 ; a163 = [(i * 164, i = 1, 99)]
  v164 = 164.25d0 * 1.5d0 ; a164 = [(i * 165, i = 1, 99)]
  v165 = 165.25d0 * 1.5d0 ; a165 = [(i * 166, i = 1, 99)]
  v166 = 166.25d0 * 1.5d0 ; a166 = [(i * 167, i = 1, 99)]
  v167 = 167.25d0 * 1.5d0 ; a167 = [(i * 168, i = 1, 99)]
  v168 = 168.25d0 * 1.5d0 ; a168 = [(i * 169, i = 1, 99)]
  v169 = 169.25d0 * 1.5d0 ; a169 = [(i * 170, i = 1, 99)]
  v170 = 170.25d0 * 1.5d0 ; a170 = [(i * 171, i = 1, 99)]
  v171 = 171.25d0 * 1.5d0 ; a171 = [(i * 172, i = 1, 99)]
  v172 = 172.25d0 * 1.5d0 ; a172 = [(i * 173, i = 1, 99)]
  v173 = 173.25d0 * 1.5d0 ; a173 = [(i * 174, i = 1, 99)]
  v174 = 174.25d0 * 1.5d0 ; a174 = [(i * 175, i = 1, 99)]
  v175 = 175.25d0 * 1.5d0 ; a175 = [(i * 176, i = 1, 99)]
  v176 = 176.25d0 * 1.5d0 ; a176 = [(i * 177, i = 1, 99)]
  v177 = 177.25d0 * 1.5d0 ; a177 = [(i * 178, i = 1, 99)]
  v178 = 178.25d0 * 1.5d0 ; a178 = [(i * 179, i = 1, 99)]
  v179 = 179.25d0 * 1.5d0 ; a179 = [(i * 180, i = 1, 99)]
  v180 = 180.25d0 * 1.5d0 ; a180 = [(i * 181, i = 1, 99)]
  v181 = 181.25d0 * 1.5d0 ; a181 = [(i * 182, i = 1, 99)]
  v182 = 182.25d0 * 1.5d0 ; a182 = [(i * 183, i = 1, 99)]
  v183 = 183.25d0 * 1.5d0 ; a183 = [(i * 184, i = 1, 99)]
  v184 = 184.25d0 * 1.5d0 ; a184 = [(i * 185, i = 1, 99)]
  v185 = 185.25d0 * 1.5d0 ; a185 = [(i * 186, i = 1, 99)]
  v186 = 186.25d0 * 1.5d0 ; a186 = [(i * 187, i = 1, 99)]
  v187 = 187.25d0 * 1.5d0 ; a187 = [(i * 188, i = 1, 99)]
  v188 = 188.25d0 * 1.5d0 ; a188 = [(i * 189, i = 1, 99)]
  v189 = 189.25d0 * 1.5d0 ; a189 = [(i * 190, i = 1, 99)]
  v190 = 190.25d0 * 1.5d0 ; a190 = [(i * 191, i = 1, 99)]
  v191 = 191.25d0 * 1.5d0 ; a191 = [(i * 192, i = 1, 99)]
  v192 = 192.25d0 * 1.5d0 ; a192 = [(i * 193, i = 1, 99)]
  v193 = 193.25d0 * 1.5d0 ; a193 = [(i * 194, i = 1, 99)]
  v194 = 194.25d0 * 1.5d0 ; a194 = [(i * 195, i = 1, 99)]
  v195 = 195.25d0 * 1.5d0 ; a195 = [(i * 196, i = 1, 99)]
  v196 = 196.25d0 * 1.5d0 ; a196 = [(i * 197, i = 1, 99)]
  v197 = 197.25d0 * 1.5d0 ; a197 = [(i * 198, i = 1, 99)]
  v198 = 198.25d0 * 1.5d0 ; a198 = [(i * 199, i = 1, 99)]
  v199 = 199.25d0 * 1.5d0 ; a199 = [(i * 200, i = 1, 99)]
  v200 = 200.25d0 * 1.5d0 ; a200 = [(i * 201, i = 1, 99)]
  v201 = 201.25d0 * 1.5d0 ; a201 = [(i * 202, i = 1, 99)]
  v202 = 202.25d0 * 1.5d0 ; a202 = [(i * 203, i = 1, 99)]
  v203 = 203.25d0 * 1.5d0 ; a203 = [(i * 204, i = 1, 99)]
  v204 = 204.25d0 * 1.5d0 ; a204 = [(i * 205, i = 1, 99)]
  v205 = 205.25d0 * 1.5d0 ; a205 = [(i * 206, i = 1, 99)]
  v206 = 206.25d0 * 1.5d0 ; a206 = [(i * 207, i = 1, 99)]
  v207 = 207.25d0 * 1.5d0 ; a207 = [(i * 208, i = 1, 99)]
  v208 = 208.25d0 * 1.5d0 ; a208 = [(i * 209, i = 1, 99)]
  v209 = 209.25d0 * 1.5d0 ; a209 = [(i * 210, i = 1, 99)]
  v210 = 210.25d0 * 1.5d0 ; a210 = [(i * 211, i = 1, 99)]
  v211 = 211.25d0 * 1.5d0 ; a211 = [(i * 212, i = 1, 99)]
  v212 = 212.25d0 * 1.5d0 ; a212 = [(i * 213, i = 1, 99)]
  v213 = 213.25d0 * 1.5d0 ; a213 = [(i * 214, i = 1, 99)]
  v214 = 214.25d0 * 1.5d0 ; a214 = [(i * 215, i = 1, 99)]
  v215 = 215.25d0 * 1.5d0 ; a215 = [(i * 216, i = 1, 99)]
  v216 = 216.25d0 * 1.5d0 ; a216 = [(i * 217, i = 1, 99)]
  v217 = 217.25d0 * 1.5d0 ; a217 = [(i * 218, i = 1, 99)]
  v218 = 218.25d0 * 1.5d0 ; a218 = [(i * 219, i = 1, 99)]
  v219 = 219.25d0 * 1.5d0 ; a219 = [(i * 220, i = 1, 99)]
  v220 = 220.25d0 * 1.5d0 ; a220 = [(i * 221, i = 1, 99)]
  v221 = 221.25d0 * 1.5d0 ; a221 = [(i * 222, i = 1, 99)]
  v222 = 222.25d0 * 1.5d0 ; a222 = [(i * 223, i = 1, 99)]
  v223 = 223.25d0 * 1.5d0 ; a223 = [(i * 224, i = 1, 99)]
  v224 = 224.25d0 * 1.5d0 ; a224 = [(i * 225, i = 1, 99)]
  v225 = 225.25d0 * 1.5d0 ; a225 = [(i * 226, i = 1, 99)]
  v226 = 226.25d0 * 1.5d0 ; a226 = [(i * 227, i = 1, 99)]
  v227 = 227.25d0 * 1.5d0 ; a227 = [(i * 228, i = 1, 99)]
  v228 = 228.25d0 * 1.5d0 ; a228 = [(i * 229, i = 1, 99)]
  v229 = 229.25d0 * 1.5d0 ; a229 = [(i * 230, i = 1, 99)]
  v230 = 230.25d0 * 1.5d0 ; a230 = [(i * 231, i = 1, 99)]
  v231 = 231.25d0 * 1.5d0 ; a231 = [(i * 232, i = 1, 99)]
  v232 = 232.25d0 * 1.5d0 ; a232 = [(i * 233, i = 1, 99)]
  v233 = 233.25d0 * 1.5d0 ; a233 = [(i * 234, i = 1, 99)]
  v234 = 234.25d0 * 1.5d0 ; a234 = [(i * 235, i = 1, 99)]
  v235 = 235.25d0 * 1.5d0 ; a235 = [(i * 236, i = 1, 99)]
  v236 = 236.25d0 * 1.5d0 ; a236 = [(i * 237, i = 1, 99)]
  v237 = 237.25d0 * 1.5d0 ; a237 = [(i * 238, i = 1, 99)]
  v238 = 238.25d0 * 1.5d0 ; a238 = [(i * 239, i = 1, 99)]
  v239 = 239.25d0 * 1.5d0 ; a239 = [(i * 240, i = 1, 99)]
  v240 = 240.25d0 * 1.5d0 ; a240 = [(i * 241, i = 1, 99)]
  v241 = 241.25d0 * 1.5d0 ; a241 = [(i * 242, i = 1, 99)]
  v242 = 242.25d0 * 1.5d0 ; a242 = [(i * 243, i = 1, 99)]
  v243 = 243.25d0 * 1.5d0 ; a243 = [(i * 244, i = 1, 99)]
  v244 = 244.25d0 * 1.5d0 ; a244 = [(i * 245, i = 1, 99)]
  v245 = 245.25d0 * 1.5d0 ; a245 = [(i * 246, i = 1, 99)]
  v246 = 246.25d0 * 1.5d0 ; a246 = [(i * 247, i = 1, 99)]
  v247 = 247.25d0 * 1.5d0 ; a247 = [(i * 248, i = 1, 99)]
  v248 = 248.25d0 * 1.5d0 ; a248 = [(i * 249, i = 1, 99)]
  v249 = 249.25d0 * 1.5d0 ; a249 = [(i * 250, i = 1, 99)]
  v250 = 250.25d0 * 1.5d0 ; a250 = [(i * 251, i = 1, 99)]
  v251 = 251.25d0 * 1.5d0 ; a251 = [(i * 252, i = 1, 99)]
  v252 = 252.25d0 * 1.5d0 ; a252 = [(i * 253, i = 1, 99)]
  v253 = 253.25d0 * 1.5d0 ; a253 = [(i * 254, i = 1, 99)]
  v254 = 254.25d0 * 1.5d0 ; a254 = [(i * 255, i = 1, 99)]
  v255 = 255.25d0 * 1.5d0 ; a255 = [(i * 256, i = 1, 99)]
  v256 = 256.25d0 * 1.5d0 ; a256 = [(i * 257, i = 1, 99)]
  v257 = 257.25d0 * 1.5d0 ; a257 = [(i * 258, i = 1, 99)]
  v258 = 258.25d0 * 1.5d0 ; a258 = [(i * 259, i = 1, 99)]
  v259 = 259.25d0 * 1.5d0 ; a259 = [(i * 260, i = 1, 99)]
  v260 = 260.25d0 * 1.5d0 ; a260 = [(i * 261, i = 1, 99)]
  v261 = 261.25d0 * 1.5d0 ; a261 = [(i * 262, i = 1, 99)]
  v262 = 262.25d0 * 1.5d0 ; a262 = [(i * 263, i = 1, 99)]
  v263 = 263.25d0 * 1.5d0 ; a263 = [(i * 264, i = 1, 99)]
  v264 = 264.25d0 * 1.5d0 ; a264 = [(i * 265, i = 1, 99)]
  v265 = 265.25d0 * 1.5d0 ; a265 = [(i * 266, i = 1, 99)]
  v266 = 266.25d0 * 1.5d0 ; a266 = [(i * 267, i = 1, 99)]
  v267 = 267.25d0 * 1.5d0 ; a267 = [(i * 268, i = 1, 99)]
  v268 = 268.25d0 * 1.5d0 ; a268 = [(i * 269, i = 1, 99)]
  v269 = 269.25d0 * 1.5d0 ; a269 = [(i * 270, i = 1, 99)]
  v270 = 270.25d0 * 1.5d0 ; a270 = [(i * 271, i = 1, 99)]
  v271 = 271.25d0 * 1.5d0 ; a271 = [(i * 272, i = 1, 99)]
  v272 = 272.25d0 * 1.5d0 ; a272 = [(i * 273, i = 1, 99)]
  v273 = 273.25d0 * 1.5d0 ; a273 = [(i * 274, i = 1, 99)]
  v274 = 274.25d0 * 1.5d0 ; a274 = [(i * 275, i = 1, 99)]
  v275 = 275.25d0 * 1.5d0 ; a275 = [(i * 276, i = 1, 99)]
  v276 = 276.25d0 * 1.5d0 ; a276 = [(i * 277, i = 1, 99)]
  v277 = 277.25d0 * 1.5d0 ; a277 = [(i * 278, i = 1, 99)]
  v278 = 278.25d0 * 1.5d0 ; a278 = [(i * 279, i = 1, 99)]
  v279 = 279.25d0 * 1.5d0 ; a279 = [(i * 280, i = 1, 99)]
  v280 = 280.25d0 * 1.5d0 ; a280 = [(i * 281, i = 1, 99)]
  v281 = 281.25d0 * 1.5d0 ; a281 = [(i * 282, i = 1, 99)]
  v282 = 282.25d0 * 1.5d0 ; a282 = [(i * 283, i = 1, 99)]
  v283 = 283.25d0 * 1.5d0 ; a283 = [(i * 284, i = 1, 99)]
  v284 = 284.25d0 * 1.5d0 ; a284 = [(i * 285, i = 1, 99)]
  v285 = 285.25d0 * 1.5d0 ; a285 = [(i * 286, i = 1, 99)]
  v286 = 286.25d0 * 1.5d0 ; a286 = [(i * 287, i = 1, 99)]
  v287 = 287.25d0 * 1.5d0 ; a287 = [(i * 288, i = 1, 99)]
  v288 = 288.25d0 * 1.5d0 ; a288 = [(i * 289, i = 1, 99)]
  v289 = 289.25d0 * 1.5d0 ; a289 = [(i * 290, i = 1, 99)]
  v290 = 290.25d0 * 1.5d0 ; a290 = [(i * 291, i = 1, 99)]
  v291 = 291.25d0 * 1.5d0 ; a291 = [(i * 292, i = 1, 99)]
  v292 = 292.25d0 * 1.5d0 ; a292 = [(i * 293, i = 1, 99)]
  v293 = 293.25d0 * 1.5d0 ; a293 = [(i * 294, i = 1, 99)]
  v294 = 294.25d0 * 1.5d0 ; a294 = [(i * 295, i = 1, 99)]
  v295 = 295.25d0 * 1.5d0 ; a295 = [(i * 296, i = 1, 99)]
  v296 = 296.25d0 * 1.5d0 ; a296 = [(i * 297, i = 1, 99)]
  v297 = 297.25d0 * 1.5d0 ; a297 = [(i * 298, i = 1, 99)]
  v298 = 298.25d0 * 1.5d0 ; a298 = [(i * 299, i = 1, 99)]
  v299 = 299.25d0 * 1.5d0 ; a299 = [(i * 300, i = 1, 99)]
  v300 = 300.25d0 * 1.5d0 ; a300 = [(i * 301, i = 1, 99)]
  v301 = 301.25d0 * 1.5d0 ; a301 = [(i * 302, i = 1, 99)]
  v302 = 302.25d0 * 1.5d0 ; a302 = [(i * 303, i = 1, 99)]
  v303 = 303.25d0 * 1.5d0 ; a303 = [(i * 304, i = 1, 99)]
  v304 = 304.25d0 * 1.5d0 ; a304 = [(i * 305, i = 1, 99)]
  v305 = 305.25d0 * 1.5d0 ; a305 = [(i * 306, i = 1, 99)]
  v306 = 306.25d0 * 1.5d0 ; a306 = [(i * 307, i = 1, 99)]
  v307 = 307.25d0 * 1.5d0 ; a307 = [(i * 308, i = 1, 99)]
  v308 = 308.25d0 * 1.5d0 ; a308 = [(i * 309, i = 1, 99)]
  v309 = 309.25d0 * 1.5d0 ; a309 = [(i * 310, i = 1, 99)]
  v310 = 310.25d0 * 1.5d0 ; a310 = [(i * 311, i = 1, 99)]
  v311 = 311.25d0 * 1.5d0 ; a311 = [(i * 312, i = 1, 99)]
  v312 = 312.25d0 * 1.5d0 ; a312 = [(i * 313, i = 1, 99)]
  v313 = 313.25d0 * 1.5d0 ; a313 = [(i * 314, i = 1, 99)]
  v314 = 314.25d0 * 1.5d0 ; a314 = [(i * 315, i = 1, 99)]
  v315 = 315.25d0 * 1.5d0 ; a315 = [(i * 316, i = 1, 99)]
  v316 = 316.25d0 * 1.5d0 ; a316 = [(i * 317, i = 1, 99)]
  v317 = 317.25d0 * 1.5d0 ; a317 = [(i * 318, i = 1, 99)]
  v318 = 318.25d0 * 1.5d0 ; a318 = [(i * 319, i = 1, 99)]
  v319 = 319.25d0 * 1.5d0 ; a319 = [(i * 320, i = 1, 99)]
  v320 = 320.25d0 * 1.5d0 ; a320 = [(i * 321, i = 1, 99)]
  v321 = 321.25d0 * 1.5d0 ; a321 = [(i * 322, i = 1, 99)]
  v322 = 322.25d0 * 1.5d0 ; a322 = [(i * 323, i = 1, 99)]
  v323 = 323.25d0 * 1.5d0 ; a323 = [(i * 324, i = 1, 99)]
  v324 = 324.25d0 * 1.5d0 ; a324 = [(i * 325, i = 1, 99)]
  v325 = 325.25d0 * 1.5d0 ; a325 = [(i * 326, i = 1, 99)]
  v326 = 326.25d0 * 1.5d0 ; a326 = [(i * 327, i = 1, 99)]
  v327 = 327.25d0 * 1.5d0 ; a327 = [(i * 328, i = 1, 99)]
  v328 = 328.25d0 * 1.5d0 ; a328 = [(i * 329, i = 1, 99)]
  v329 = 329.25d0 * 1.5d0 ; a329 = [(i * 330, i = 1, 99)]
  v330 = 330.25d0 * 1.5d0 ; a330 = [(i * 331, i = 1, 99)]
  v331 = 331.25d0 * 1.5d0 ; a331 = [(i * 332, i = 1, 99)]
  v332 = 332.25d0 * 1.5d0 ; a332 = [(i * 333, i = 1, 99)]
  v333 = 333.25d0 * 1.5d0 ; a333 = [(i * 334, i = 1, 99)]
  v334 = 334.25d0 * 1.5d0 ; a334 = [(i * 335, i = 1, 99)]
  v335 = 335.25d0 * 1.5d0 ; a335 = [(i * 336, i = 1, 99)]
  v336 = 336.25d0 * 1.5d0 ; a336 = [(i * 337, i = 1, 99)]
  v337 = 337.25d0 * 1.5d0 ; a337 = [(i * 338, i = 1, 99)]
  v338 = 338.25d0 * 1.5d0 ; a338 = [(i * 339, i = 1, 99)]
  v339 = 339.25d0 * 1.5d0 ; a339 = [(i * 340, i = 1, 99)]
  v340 = 340.25d0 * 1.5d0 ; a340 = [(i * 341, i = 1, 99)]
  v341 = 341.25d0 * 1.5d0 ; a341 = [(i * 342, i = 1, 99)]
  v342 = 342.25d0 * 1.5d0 ; a342 = [(i * 343, i = 1, 99)]
  v343 = 343.25d0 * 1.5d0 ; a343 = [(i * 344, i = 1, 99)]
  v344 = 344.25d0 * 1.5d0 ; a344 = [(i * 345, i = 1, 99)]
  v345 = 345.25d0 * 1.5d0 ; a345 = [(i * 346, i = 1, 99)]
  v346 = 346.25d0 * 1.5d0 ; a346 = [(i * 347, i = 1, 99)]
  v347 = 347.25d0 * 1.5d0 ; a347 = [(i * 348, i = 1, 99)]
  v348 = 348.25d0 * 1.5d0 ; a348 = [(i * 349, i = 1, 99)]
  v349 = 349.25d0 * 1.5d0 ; a349 = [(i * 350, i = 1, 99)]
  v350 = 350.25d0 * 1.5d0 ; a350 = [(i * 351, i = 1, 99)]
  v351 = 351.25d0 * 1.5d0 ; a351 = [(i * 352, i = 1, 99)]
  v352 = 352.25d0 * 1.5d0 ; a352 = [(i * 353, i = 1, 99)]
  v353 = 353.25d0 * 1.5d0 ; a353 = [(i * 354, i = 1, 99)]
  v354 = 354.25d0 * 1.5d0 ; a354 = [(i * 355, i = 1, 99)]
  v355 = 355.25d0 * 1.5d0 ; a355 = [(i * 356, i = 1, 99)]
  v356 = 356.25d0 * 1.5d0 ; a356 = [(i * 357, i = 1, 99)]
  v357 = 357.25d0 * 1.5d0 ; a357 = [(i * 358, i = 1, 99)]
  v358 = 358.25d0 * 1.5d0 ; a358 = [(i * 359, i = 1, 99)]
  v359 = 359.25d0 * 1.5d0 ; a359 = [(i * 360, i = 1, 99)]
  v360 = 360.25d0 * 1.5d0 ; a360 = [(i * 361, i = 1, 99)]
  v361 = 361.25d0 * 1.5d0 ; a361 = [(i * 362, i = 1, 99)]
  v362 = 362.25d0 * 1.5d0 ; a362 = [(i * 363, i = 1, 99)]
  v363 = 363.25d0 * 1.5d0 ; a363 = [(i * 364, i = 1, 99)]
  v364 = 364.25d0 * 1.5d0 ; a364 = [(i * 365, i = 1, 99)]
  v365 = 365.25d0 * 1.5d0 ; a365 = [(i * 366, i = 1, 99)]
  v366 = 366.25d0 * 1.5d0 ; a366 = [(i * 367, i = 1, 99)]
  v367 = 367.25d0 * 1.5d0 ; a367 = [(i * 368, i = 1, 99)]
  v368 = 368.25d0 * 1.5d0 ; a368 = [(i * 369, i = 1, 99)]
  v369 = 369.25d0 * 1.5d0 ; a369 = [(i * 370, i = 1, 99)]
  v370 = 370.25d0 * 1.5d0 ; a370 = [(i * 371, i = 1, 99)]
  v371 = 371.25d0 * 1.5d0 ; a371 = [(i * 372, i = 1, 99)]
  v372 = 372.25d0 * 1.5d0 ; a372 = [(i * 373, i = 1, 99)]
  v373 = 373.25d0 * 1.5d0 ; a373 = [(i * 374, i = 1, 99)]
  v374 = 374.25d0 * 1.5d0 ; a374 = [(i * 375, i = 1, 99)]
  v375 = 375.25d0 * 1.5d0 ; a375 = [(i * 376, i = 1, 99)]
  v376 = 376.25d0 * 1.5d0 ; a376 = [(i * 377, i = 1, 99)]
  v377 = 377.25d0 * 1.5d0 ; a377 = [(i * 378, i = 1, 99)]
  v378 = 378.25d0 * 1.5d0 ; a378 = [(i * 379, i = 1, 99)]
  v379 = 379.25d0 * 1.5d0 ; a379 = [(i * 380, i = 1, 99)]
  v380 = 380.25d0 * 1.5d0 ; a380 = [(i * 381, i = 1, 99)]
  v381 = 381.25d0 * 1.5d0 ; a381 = [(i * 382, i = 1, 99)]
  v382 = 382.25d0 * 1.5d0 ; a382 = [(i * 383, i = 1, 99)]
  v383 = 383.25d0 * 1.5d0 ; a383 = [(i * 384, i = 1, 99)]
  v384 = 384.25d0 * 1.5d0 ; a384 = [(i * 385, i = 1, 99)]
  v385 = 385.25d0 * 1.5d0 ; a385 = [(i * 386, i = 1, 99)]
  v386 = 386.25d0 * 1.5d0 ; a386 = [(i * 387, i = 1, 99)]
  v387 = 387.25d0 * 1.5d0 ; a387 = [(i * 388, i = 1, 99)]
  v388 = 388.25d0 * 1.5d0 ; a388 = [(i * 389, i = 1, 99)]
  v389 = 389.25d0 * 1.5d0 ; a389 = [(i * 390, i = 1, 99)]
  v390 = 390.25d0 * 1.5d0 ; a390 = [(i * 391, i = 1, 99)]
  v391 = 391.25d0 * 1.5d0 ; a391 = [(i * 392, i = 1, 99)]
  v392 = 392.25d0 * 1.5d0 ; a392 = [(i * 393, i = 1, 99)]
  v393 = 393.25d0 * 1.5d0 ; a393 = [(i * 394, i = 1, 99)]
  v394 = 394.25d0 * 1.5d0 ; a394 = [(i * 395, i = 1, 99)]
  v395 = 395.25d0 * 1.5d0 ; a395 = [(i * 396, i = 1, 99)]
  v396 = 396.25d0 * 1.5d0 ; a396 = [(i * 397, i = 1, 99)]
  v397 = 397.25d0 * 1.5d0 ; a397 = [(i * 398, i = 1, 99)]
  v398 = 398.25d0 * 1.5d0 ; a398 = [(i * 399, i = 1, 99)]
  v399 = 399.25d0 * 1.5d0 ; a399 = [(i * 400, i = 1, 99)]
  v400 = 400.25d0 * 1.5d0 ; a400 = [(i * 401, i = 1, 99)]
  v401 = 401.25d0 * 1.5d0 ; a401 = [(i * 402, i = 1, 99)]
  v402 = 402.25d0 * 1.5d0 ; a402 = [(i * 403, i = 1, 99)]
  v403 = 403.25d0 * 1.5d0 ; a403 = [(i * 404, i = 1, 99)]
  v404 = 404.25d0 * 1.5d0 ; a404 = [(i * 405, i = 1, 99)]
  v405 = 405.25d0 * 1.5d0 ; a405 = [(i * 406, i = 1, 99)]
  v406 = 406.25d0 * 1.5d0 ; a406 = [(i * 407, i = 1, 99)]
  v407 = 407.25d0 * 1.5d0 ; a407 = [(i * 408, i = 1, 99)]
  v408 = 408.25d0 * 1.5d0 ; a408 = [(i * 409, i = 1, 99)]
  v409 = 409.25d0 * 1.5d0 ; a409 = [(i * 410, i = 1, 99)]
  v410 = 410.25d0 * 1.5d0 ; a410 = [(i * 411, i = 1, 99)]
  v411 = 411.25d0 * 1.5d0 ; a411 = [(i * 412, i = 1, 99)]
  v412 = 412.25d0 * 1.5d0 ; a412 = [(i * 413, i = 1, 99)]
  v413 = 413.25d0 * 1.5d0 ; a413 = [(i * 414, i = 1, 99)]
  v414 = 414.25d0 * 1.5d0 ; a414 = [(i * 415, i = 1, 99)]
  v415 = 415.25d0 * 1.5d0 ; a415 = [(i * 416, i = 1, 99)]
  v416 = 416.25d0 * 1.5d0 ; a416 = [(i * 417, i = 1, 99)]
  v417 = 417.25d0 * 1.5d0 ; a417 = [(i * 418, i = 1, 99)]
  v418 = 418.25d0 * 1.5d0 ; a418 = [(i * 419, i = 1, 99)]
  v419 = 419.25d0 * 1.5d0 ; a419 = [(i * 420, i = 1, 99)]
  v420 = 420.25d0 * 1.5d0 ; a420 = [(i * 421, i = 1, 99)]
  v421 = 421.25d0 * 1.5d0 ; a421 = [(i * 422, i = 1, 99)]
  v422 = 422.25d0 * 1.5d0 ; a422 = [(i * 423, i = 1, 99)]
  v423 = 423.25d0 * 1.5d0 ; a423 = [(i * 424, i = 1, 99)]
  v424 = 424.25d0 * 1.5d0 ; a424 = [(i * 425, i = 1, 99)]
  v425 = 425.25d0 * 1.5d0 ; a425 = [(i * 426, i = 1, 99)]
  v426 = 426.25d0 * 1.5d0 ; a426 = [(i * 427, i = 1, 99)]
  v427 = 427.25d0 * 1.5d0 ; a427 = [(i * 428, i = 1, 99)]
  v428 = 428.25d0 * 1.5d0 ; a428 = [(i * 429, i = 1, 99)]
  v429 = 429.25d0 * 1.5d0 ; a429 = [(i * 430, i = 1, 99)]
  v430 = 430.25d0 * 1.5d0 ; a430 = [(i * 431, i = 1, 99)]
  v431 = 431.25d0 * 1.5d0 ; a431 = [(i * 432, i = 1, 99)]
  v432 = 432.25d0 * 1.5d0 ; a432 = [(i * 433, i = 1, 99)]
  v433 = 433.25d0 * 1.5d0 ; a433 = [(i * 434, i = 1, 99)]
  v434 = 434.25d0 * 1.5d0 ; a434 = [(i * 435, i = 1, 99)]
  v435 = 435.25d0 * 1.5d0 ; a435 = [(i * 436, i = 1, 99)]
  v436 = 436.25d0 * 1.5d0 ; a436 = [(i * 437, i = 1, 99)]
  v437 = 437.25d0 * 1.5d0 ; a437 = [(i * 438, i = 1, 99)]
  v438 = 438.25d0 * 1.5d0 ; a438 = [(i * 439, i = 1, 99)]
  v439 = 439.25d0 * 1.5d0 ; a439 = [(i * 440, i = 1, 99)]
  v440 = 440.25d0 * 1.5d0 ; a440 = [(i * 441, i = 1, 99)]
  v441 = 441.25d0 * 1.5d0 ; a441 = [(i * 442, i = 1, 99)]
  v442 = 442.25d0 * 1.5d0 ; a442 = [(i * 443, i = 1, 99)]
  v443 = 443.25d0 * 1.5d0 ; a443 = [(i * 444, i = 1, 99)]
  v444 = 444.25d0 * 1.5d0 ; a444 = [(i * 445, i = 1, 99)]
  v445 = 445.25d0 * 1.5d0 ; a445 = [(i * 446, i = 1, 99)]
  v446 = 446.25d0 * 1.5d0 ; a446 = [(i * 447, i = 1, 99)]
  v447 = 447.25d0 * 1.5d0 ; a447 = [(i * 448, i = 1, 99)]
  v448 = 448.25d0 * 1.5d0 ; a448 = [(i * 449, i = 1, 99)]
  v449 = 449.25d0 * 1.5d0 ; a449 = [(i * 450, i = 1, 99)]
  v450 = 450.25d0 * 1.5d0 ; a450 = [(i * 451, i = 1, 99)]
  v451 = 451.25d0 * 1.5d0 ; a451 = [(i * 452, i = 1, 99)]
  v452 = 452.25d0 * 1.5d0 ; a452 = [(i * 453, i = 1, 99)]
  v453 = 453.25d0 * 1.5d0 ; a453 = [(i * 454, i = 1, 99)]
  v454 = 454.25d0 * 1.5d0 ; a454 = [(i * 455, i = 1, 99)]
  v455 = 455.25d0 * 1.5d0 ; a455 = [(i * 456, i = 1, 99)]
  v456 = 456.25d0 * 1.5d0 ; a456 = [(i * 457, i = 1, 99)]
  v457 = 457.25d0 * 1.5d0 ; a457 = [(i * 458, i = 1, 99)]
  v458 = 458.25d0 * 1.5d0 ; a458 = [(i * 459, i = 1, 99)]
  v459 = 459.25d0 * 1.5d0 ; a459 = [(i * 460, i = 1, 99)]
  v460 = 460.25d0 * 1.5d0 ; a460 = [(i * 461, i = 1, 99)]
  v461 = 461.25d0 * 1.5d0 ; a461 = [(i * 462, i = 1, 99)]
  v462 = 462.25d0 * 1.5d0 ; a462 = [(i * 463, i = 1, 99)]
  v463 = 463.25d0 * 1.5d0 ; a463 = [(i * 464, i = 1, 99)]
  v464 = 464.25d0 * 1.5d0 ; a464 = [(i * 465, i = 1, 99)]
  v465 = 465.25d0 * 1.5d0 ; a465 = [(i * 466, i = 1, 99)]
  v466 = 466.25d0 * 1.5d0 ; a466 = [(i * 467, i = 1, 99)]
  v467 = 467.25d0 * 1.5d0 ; a467 = [(i * 468, i = 1, 99)]
  v468 = 468.25d0 * 1.5d0 ; a468 = [(i * 469, i = 1, 99)]
  v469 = 469.25d0 * 1.5d0 ; a469 = [(i * 470, i = 1, 99)]
  v470 = 470.25d0 * 1.5d0 ; a470 = [(i * 471, i = 1, 99)]
  v471 = 471.25d0 * 1.5d0 ; a471 = [(i * 472, i = 1, 99)]
  v472 = 472.25d0 * 1.5d0 ; a472 = [(i * 473, i = 1, 99)]
  v473 = 473.25d0 * 1.5d0 ; a473 = [(i * 474, i = 1, 99)]
  v474 = 474.25d0 * 1.5d0 ; a474 = [(i * 475, i = 1, 99)]
  v475 = 475.25d0 * 1.5d0 ; a475 = [(i * 476, i = 1, 99)]
  v476 = 476.25d0 * 1.5d0 ; a476 = [(i * 477, i = 1, 99)]
  v477 = 477.25d0 * 1.5d0 ; a477 = [(i * 478, i = 1, 99)]
  v478 = 478.25d0 * 1.5d0 ; a478 = [(i * 479, i = 1, 99)]
  v479 = 479.25d0 * 1.5d0 ; a479 = [(i * 480, i = 1, 99)]
  v480 = 480.25d0 * 1.5d0 ; a480 = [(i * 481, i = 1, 99)]
  v481 = 481.25d0 * 1.5d0 ; a481 = [(i * 482, i = 1, 99)]
  v482 = 482.25d0 * 1.5d0 ; a482 = [(i * 483, i = 1, 99)]
  v483 = 483.25d0 * 1.5d0 ; a483 = [(i * 484, i = 1, 99)]
  v484 = 484.25d0 * 1.5d0 ; a484 = [(i * 485, i = 1, 99)]
  v485 = 485.25d0 * 1.5d0 ; a485 = [(i * 486, i = 1, 99)]
  v486 = 486.25d0 * 1.5d0 ; a486 = [(i * 487, i = 1, 99)]
  v487 = 487.25d0 * 1.5d0 ; a487 = [(i * 488, i = 1, 99)]
  v488 = 488.25d0 * 1.5d0 ; a488 = [(i * 489, i = 1, 99)]
  v489 = 489.25d0 * 1.5d0 ; a489 = [(i * 490, i = 1, 99)]
  v490 = 490.25d0 * 1.5d0 ; a490 = [(i * 491, i = 1, 99)]
  v491 = 491.25d0 * 1.5d0 ; a491 = [(i * 492, i = 1, 99)]
  v492 = 492.25d0 * 1.5d0 ; a492 = [(i * 493, i = 1, 99)]
  v493 = 493.25d0 * 1.5d0 ; a493 = [(i * 494, i = 1, 99)]
  v494 = 494.25d0 * 1.5d0 ; a494 = [(i * 495, i = 1, 99)]
  v495 = 495.25d0 * 1.5d0 ; a495 = [(i * 496, i = 1, 99)]
  v496 = 496.25d0 * 1.5d0 ; a496 = [(i * 497, i = 1, 99)]
  v497 = 497.25d0 * 1.5d0 ; a497 = [(i * 498, i = 1, 99)]
  v498 = 498.25d0 * 1.5d0 ; a498 = [(i * 499, i = 1, 99)]
  v499 = 499.25d0 * 1.5d0 ; a499 = [(i * 500, i = 1, 99)]
  open (30, file=trim(path), status='replace')
  call system_clock(start, rate)
  do r = 1, rounds
    rewind (30)
    write (30, nml=big)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'write ', dble(finish - start) / dble(rate) * 1.0d9 / (50000.0d0 * rounds)
  call system_clock(start, rate)
  do r = 1, rounds
    rewind (30)
    read (30, nml=big)
  end do
  call system_clock(finish)
  print '(A, F10.1)', 'read ', dble(finish - start) / dble(rate) * 1.0d9 / (50000.0d0 * rounds)
  close (30, status='delete')
end program namelist_peer
