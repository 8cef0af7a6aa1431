"""What papers, screens, cards and labels without a bank card's number say: sentences, labels, and made-up numbers.

Data, and how its {names} are filled. Everybody and everything told is invented.
"""

import re

import bankcard
import banks
import people
import tables

# What is put in the place of a {name}.
NUMBERS = {
    "date": lambda rng: f"{rng.randint(2019, 2026)}年{rng.randint(1, 12)}月{rng.randint(1, 28)}日",
    "day": lambda rng: f"{rng.randint(2019, 2026)}-{rng.randint(1, 12):02d}-{rng.randint(1, 28):02d}",
    "time": lambda rng: f"{rng.randint(0, 23):02d}:{rng.randint(0, 59):02d}",
    "money": lambda rng: f"{rng.randint(1, 99999):,}.{rng.randint(0, 99):02d}",
    "few": lambda rng: str(rng.randint(1, 60)),
    "three": lambda rng: digits(rng, 3), "four": lambda rng: digits(rng, 4), "six": lambda rng: digits(rng, 6),
    "twelve": lambda rng: digits(rng, 12), "twenty": lambda rng: digits(rng, 20),
    "long": lambda rng: _long(rng, rng.randint(12, 20)),
    "serial": lambda rng: _long(rng, rng.randint(16, 19)),
    "tax": lambda rng: "9" + digits(rng, 16) + rng.choice("ABCDEFGH0123456789"),
    # No mobile number begins with 12.
    "phone": lambda rng: rng.choice(("12{} {} {}", "12{}{}{}", "12{}-{}-{}")).format(
        digits(rng, 1), digits(rng, 4), digits(rng, 4)),
    "landline": lambda rng: f"0{digits(rng, 3)}-{digits(rng, 7)}",
    "hotline": lambda rng: rng.choice(banks.SHORT_HOTLINES),
    "bank": lambda rng: rng.choice(list(banks.BANKS)),
    "person": lambda rng: people.name(rng, rng.choice("男女"), tables.HAN),
    "place": lambda rng: f"{rng.choice(tables.DISTRICTS)}{rng.choice(tables.STREETS)}{rng.randint(1, 400)}号",
    "city": lambda rng: rng.choice(tables.PROVINCES[rng.choice(("河北省", "江苏省", "四川省", "湖北省"))][1])[:2],
}
SENTENCES = (
    "清晨的雾还没有散，河边已经有人在散步。", "会议定于{date}在{place}举行，请准时参加。", "仓库里剩下的货物一共{few}箱。",
    "他们沿着石板路走了很久，才看见村口的老槐树。", "经办人{person}，联系电话{phone}。", "本办法自{date}起施行。",
    "春天的时候，山坡上开满了白色的小花。", "合同总额为{money}元，分{few}次付清。", "雨停以后，孩子们又跑到院子里去了。",
    "图书馆每天早上九点开门，晚上八点半关门。", "第{few}条　双方应当妥善保管有关资料。", "请在收到通知后{few}日内办理手续。",
    "持卡人应当妥善保管银行卡及密码，遗失时请立即拨打{hotline}挂失。", "编号为{long}的设备已经检修。",
)
HEADINGS = ("通知", "会议纪要", "使用说明", "管理办法", "银行卡领用合约", "山中来信", "工作总结")
FIELDS = (
    ("发票号码", "{twenty}"), ("发票代码", "{twelve}"), ("订单编号", "{long}"), ("纳税人识别号", "{tax}"),
    ("开户行及账号", "{bank} {long}"), ("账号", "{serial}"), ("合同编号", "{long}"), ("开票日期", "{date}"),
    ("联系电话", "{landline}"), ("客服热线", "{hotline}"), ("流水号", "{long}"), ("送货单号", "DN{twelve}"),
    ("地址", "{place}"), ("经办人", "{person}"), ("凭证号", "{serial}"),
)
FORMS = ("增值税普通发票", "送货单", "收款收据", "采购订单", "出库单", "银行业务回单")
GOODS = ("打印纸", "水泵", "螺栓", "电缆", "茶叶", "工作服", "灯管", "显示器", "轴承", "文件柜")
MESSAGES = (
    "验证码{six}，5分钟内有效。", "订单{long}已发货", "我的电话是{phone}", "快递单号{long}", "好的，收到", "明天{time}在{place}见",
    "会议号 {three} {three} {three}", "一共{money}元", "您尾号{four}的卡于{day}支出{money}元，余额{money}元。", "流水号 {serial}",
    "取件码 {four}", "{hotline}是骗子吧？", "在吗", "照片发我一下",
)
BACK_PRINT = (
    "本卡仅限持卡人本人使用，不得转借他人。", "使用本卡须遵守{bank}银行卡章程及领用合约。", "如拾获此卡，请送交{bank}任一营业网点。",
    "24小时客户服务热线 {hotline}", "本卡背面签名条须由持卡人签名方可使用。", "THIS CARD IS ISSUED UNDER THE AGREEMENT WITH THE BANK.",
    "AUTHORIZED SIGNATURE  NOT VALID UNLESS SIGNED", "信用卡逾期将影响个人信用记录，境外电话 {landline}",
)
MEMBER_NAMES = ("城市公交卡", "超市会员卡", "图书馆读者证", "健身会员卡", "校园一卡通", "VIP 会员卡", "加油充值卡", "地铁通")
SERIAL_LABELS = ("卡号", "No.", "编号", "会员号", "")


def digits(rng, count):
    """So many digits at random."""
    return "".join(rng.choice("0123456789") for _ in range(count))


def _long(rng, length):
    """A long number, mostly beginning like a bank card's, some of them in groups."""
    beginning = rng.choice(("62", "4", "5", "3", "2", "8", "1", "0"))
    number = beginning + digits(rng, length - len(beginning))
    return " ".join(bankcard.split(number, (4,) * 5)) if rng.random() < 0.4 else number


def told(template, rng):
    """The template with something made up in the place of each {name}."""
    return re.sub(r"{(\w+)}", lambda name: NUMBERS[name[1]](rng), template)
